#include "platform/foundation/Parallel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <latch>
#include <stdexcept>
#include <vector>

#include "support/ShortMemory.h"

namespace orvane {
namespace {

TEST(Parallel, callsOnceForEachIndex) {
  for (const int threads : {1, 2, 8}) {
    std::vector<std::atomic<int>> calls(100);
    inParallel(calls.size(), threads, [&](std::size_t index, std::size_t thread) {
      ++calls[index];
      EXPECT_LT(thread, static_cast<std::size_t>(threads));
    });
    EXPECT_TRUE(std::ranges::all_of(calls, [](const auto& count) { return count == 1; }));
  }
}

TEST(Parallel, callsNothingWithoutAnIndex) {
  inParallel(0, 4, [](std::size_t, std::size_t) { ADD_FAILURE(); });
}

TEST(Parallel, callsOnDifferentThreadsAtTheSameTime) {
  constexpr std::size_t count = 4;
  std::latch allRun(count);
  std::vector<std::atomic<int>> callsOfThread(count);
  inParallel(count, count, [&](std::size_t, std::size_t thread) {
    ++callsOfThread[thread];
    allRun.arrive_and_wait();  // ends only when all calls are under way
  });
  EXPECT_TRUE(std::ranges::all_of(callsOfThread, [](const auto& calls) { return calls == 1; }));
}

TEST(Parallel, throwsWhatACallThrows) {
  for (const int threads : {1, 3}) {
    std::atomic<int> calls = 0;
    const auto fail = [&](std::size_t index, std::size_t) {
      ++calls;
      if (index == 5) throw std::runtime_error("five");
    };
    EXPECT_THROW(inParallel(1'000'000, threads, fail), std::runtime_error);
    EXPECT_LT(calls, 1'000'000);
  }
}

TEST(Parallel, countsTheThreadsThatCanBeStarted) {
  EXPECT_EQ(startableThreads(0), 0);
  EXPECT_EQ(startableThreads(3), 3);
}

TEST(ParallelDeathTest, makesDoWithTheThreadsThatThereAre) {
  if (test::endsWithoutMemory()) GTEST_SKIP() << "sanitizers need memory";
  const auto workInShortMemory = [] {
    constexpr int wanted = 64;
    test::leaveMemory(std::size_t{20} << 20);  // a thread's stack takes 8 MiB of it
    const int startable = startableThreads(wanted);
    std::atomic<int> calls = 0;
    inParallel(wanted, wanted, [&](std::size_t, std::size_t) { ++calls; });
    std::_Exit(startable < wanted && calls == wanted ? 0 : 1);
  };
  EXPECT_EXIT(workInShortMemory(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace orvane
