#include "platform/foundation/Memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <limits>
#include <new>
#include <string>

#include "platform/foundation/AllocationFailures.h"

namespace orvane::Memory {
namespace {

constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();

/// The number in a control-group file; "max" and a missing file mean no limit.
std::uint64_t limitIn(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::uint64_t bytes = 0;
  return file >> bytes ? bytes : unlimited;
}

/// The least limit of a control group and all above it.
std::uint64_t limitUpFrom(std::filesystem::path group, const std::filesystem::path& root,
                          const char* file) {
  std::uint64_t least = limitIn(root / file);
  for (group = group.relative_path(); !group.empty(); group = group.parent_path()) {
    least = std::min(least, limitIn(root / group / file));
  }
  return least;
}

/// cgroups(7): lines of "number:controllers:group", the second version's without controllers.
std::uint64_t controlGroupLimit() {
  std::ifstream groups("/proc/self/cgroup");
  std::uint64_t least = unlimited;
  for (std::string line; std::getline(groups, line);) {
    const auto first = line.find(':');
    const auto second = line.find(':', first + 1);
    if (first == line.npos || second == line.npos) continue;
    const std::string controllers = line.substr(first + 1, second - first - 1);
    const std::string group = line.substr(second + 1);
    if (controllers.empty()) {
      least = std::min(least, limitUpFrom(group, "/sys/fs/cgroup", "memory.max"));
    } else if (controllers == "memory") {
      least = std::min(least, limitUpFrom(group, "/sys/fs/cgroup/memory", "memory.limit_in_bytes"));
    }
  }
  return least;
}

std::uint64_t readUsableMemory() {
  const auto pages = sysconf(_SC_PHYS_PAGES);
  const auto pageSize = sysconf(_SC_PAGESIZE);
  const auto physical = pages > 0 && pageSize > 0 ? static_cast<std::uint64_t>(pages) *
                                                        static_cast<std::uint64_t>(pageSize)
                                                  : unlimited;
  return std::min(physical, controlGroupLimit());
}

}  // namespace

std::uint64_t usable() {
  static const std::uint64_t bytes = readUsableMemory();
  return bytes;
}

void require(std::size_t bytes) {
  if (bytes == 0) return;
  // Not malloc, which may find room that only this thread can use.
  void* const probe =
      mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (probe == MAP_FAILED) {
    AllocationFailures::report();
    throw std::bad_alloc();
  }
  munmap(probe, bytes);
}

}  // namespace orvane::Memory
