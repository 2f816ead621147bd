#include "platform/foundation/AllocationFailures.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>

namespace orvane {
namespace {

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

[[noreturn]] void reactToFailure() { _exit(3); }

/// Calls `allocate` in want of memory, with the reaction that ends the process with status 3.
template <typename Allocate>
[[noreturn]] void allocateWithoutMemory(const Allocate& allocate) {
  const rlimit none{std::size_t{1} << 20, std::size_t{1} << 20};
  setrlimit(RLIMIT_DATA, &none);
  AllocationFailures::watch(reactToFailure);
  // Volatile, for a compiler may leave out an allocation that nothing uses.
  [[maybe_unused]] void* volatile block = allocate();
  _exit(0);
}

constexpr std::size_t tooMuch = std::size_t{1} << 30;

TEST(AllocationFailuresDeathTest, areSeenWhoeverAsked) {
  const auto ended = testing::ExitedWithCode(3);
  EXPECT_EXIT(allocateWithoutMemory([] { return std::malloc(tooMuch); }), ended, "");
  EXPECT_EXIT(allocateWithoutMemory([] { return std::calloc(1, tooMuch); }), ended, "");
  EXPECT_EXIT(allocateWithoutMemory([] { return std::realloc(nullptr, tooMuch); }), ended, "");
  EXPECT_EXIT(allocateWithoutMemory([] { return std::aligned_alloc(64, tooMuch); }), ended, "");
  EXPECT_EXIT(allocateWithoutMemory([] { return new char[tooMuch]; }), ended, "");
}

TEST(AllocationFailuresDeathTest, areNotSeenWhereThereAreNone) {
  EXPECT_EXIT(allocateWithoutMemory([] { return std::malloc(100); }), testing::ExitedWithCode(0),
              "");
}

#endif

}  // namespace
}  // namespace orvane
