#include "platform/foundation/Memory.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <new>

namespace orvane {
namespace {

TEST(Memory, isNoMoreThanTheMachineHas) {
  const auto physical = static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) *
                        static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
  EXPECT_GT(Memory::usable(), 0u);
  EXPECT_LE(Memory::usable(), physical);
}

TEST(Memory, isThereForALittle) {
  EXPECT_NO_THROW(Memory::require(0));
  EXPECT_NO_THROW(Memory::require(1 << 20));
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // they reserve too much

/// Ends the process with status 0 when so much is refused.
[[noreturn]] void requireUnderLimit(std::size_t bytes, rlim_t limit) {
  const rlimit addressSpace{limit, limit};
  setrlimit(RLIMIT_AS, &addressSpace);
  try {
    Memory::require(bytes);
  } catch (const std::bad_alloc&) {
    _exit(0);
  }
  _exit(1);
}

TEST(Memory, isRefusedWhereItCannotBeHad) {
  constexpr std::size_t gigabyte = std::size_t{1} << 30;
  EXPECT_EXIT(requireUnderLimit(4 * gigabyte, 2 * gigabyte), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(requireUnderLimit(gigabyte / 4, 2 * gigabyte), testing::ExitedWithCode(1), "");
}

/// Keeps 64 MiB in the heap, free, and then ends the process with status 0 when 32 MiB are refused.
[[noreturn]] void requireWithRoomInTheHeap() {
  mallopt(M_MMAP_THRESHOLD, 1 << 30);
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
  void* volatile room = std::malloc(64 << 20);
  std::free(room);
  requireUnderLimit(32 << 20, 16 << 20);
}

TEST(Memory, isRefusedWhereOnlyTheHeapHasRoom) {
  EXPECT_EXIT(requireWithRoomInTheHeap(), testing::ExitedWithCode(0), "");
}

#endif

}  // namespace
}  // namespace orvane
