#include "support/ShortMemory.h"

#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <system_error>

namespace orvane::test {
namespace {

void limitAddressSpace(rlim_t bytes) {
  rlimit limit{};
  getrlimit(RLIMIT_AS, &limit);
  limit.rlim_cur = bytes;
  if (setrlimit(RLIMIT_AS, &limit) != 0) throw std::system_error(errno, std::generic_category());
}

/// proc(5): the first number of statm.
rlim_t usedAddressSpace() {
  std::ifstream file("/proc/self/statm");
  rlim_t pages = 0;
  file >> pages;
  return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace

void leaveMemory(std::size_t bytes) {
  const rlim_t used = usedAddressSpace();
  limitAddressSpace(used);
  constexpr std::size_t smallest = std::size_t{16} << 10;
  for (std::size_t size = std::size_t{64} << 20; size >= smallest; size /= 2) {
    while (std::malloc(size) != nullptr) continue;
  }
  limitAddressSpace(used + bytes);
}

}  // namespace orvane::test
