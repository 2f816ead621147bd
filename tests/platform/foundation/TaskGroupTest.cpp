#include "platform/foundation/TaskGroup.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <set>

namespace orvane {
namespace {

TEST(TaskGroup, hasNothingToGiveWhenItIsEmpty) {
  TaskGroup<int> group;
  EXPECT_FALSE(group.next().has_value());
}

TEST(TaskGroup, givesEachResultOnce) {
  TaskGroup<int> group;
  for (int at = 0; at < 20; ++at) group.add([at] { return at; });
  std::multiset<int> results;
  while (const auto result = group.next()) results.insert(*result);
  EXPECT_EQ(results.size(), 20u);
  for (int at = 0; at < 20; ++at) EXPECT_EQ(results.count(at), 1u);
  EXPECT_FALSE(group.next().has_value());
}

TEST(TaskGroup, givesResultsInTheOrderInWhichTheTasksFinish) {
  TaskGroup<int> group;
  std::promise<void> taken;
  const std::shared_future<void> secondIsTaken = taken.get_future().share();
  group.add([secondIsTaken] {
    secondIsTaken.wait();
    return 1;
  });
  group.add([] { return 2; });
  EXPECT_EQ(group.next(), 2);
  taken.set_value();
  EXPECT_EQ(group.next(), 1);
}

TEST(TaskGroup, givesResultsThatCannotBeCopied) {
  TaskGroup<std::unique_ptr<int>> group;
  group.add([] { return std::make_unique<int>(7); });
  EXPECT_EQ(**group.next(), 7);
}

TEST(TaskGroup, runsEveryTaskInFlightAtTheSameTime) {
  TaskGroup<bool> group;
  std::atomic<int> running = 0;
  for (int at = 0; at < 3; ++at) {
    group.add([&running] {
      const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
      ++running;
      while (running < 3 && std::chrono::steady_clock::now() < end) std::this_thread::yield();
      return running == 3;
    });
  }
  for (int at = 0; at < 3; ++at) EXPECT_EQ(group.next(), true);
}

TEST(TaskGroup, runsAThousandTasksInAWindowOfEightOnAtMostEightThreads) {
  struct Result {
    int index;
    int running;
    std::thread::id thread;
  };
  std::atomic<int> running = 0;
  int started = 0;
  std::vector<bool> seen(1000);
  std::set<std::thread::id> threads;
  TaskGroup<Result> group;
  const auto startNext = [&] {
    if (started == 1000) return;
    group.add([&running, index = started] {
      const int now = ++running;
      std::this_thread::yield();
      --running;
      return Result{index, now, std::this_thread::get_id()};
    });
    ++started;
  };
  for (int at = 0; at < 8; ++at) startNext();
  while (const auto result = group.next()) {
    EXPECT_FALSE(seen[static_cast<std::size_t>(result->index)]);
    seen[static_cast<std::size_t>(result->index)] = true;
    EXPECT_LE(result->running, 8);
    threads.insert(result->thread);
    startNext();
  }
  EXPECT_TRUE(std::ranges::all_of(seen, std::identity()));
  EXPECT_LE(threads.size(), 8u);
  EXPECT_FALSE(threads.contains(std::this_thread::get_id()));
}

TEST(TaskGroup, keepsToOneThreadForTasksThatAreTakenOneAfterTheOther) {
  TaskGroup<std::thread::id> group;
  std::set<std::thread::id> threads;
  for (int at = 0; at < 200; ++at) {
    group.add([] { return std::this_thread::get_id(); });
    threads.insert(*group.next());
  }
  EXPECT_EQ(threads.size(), 1u);
}

TEST(TaskGroup, waitsForItsTasksWhenItGoes) {
  std::atomic<int> done = 0;
  {
    TaskGroup<int> group;
    for (int at = 0; at < 4; ++at) {
      group.add([&done] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        return ++done;
      });
    }
  }
  EXPECT_EQ(done, 4);
}

TEST(ThreadPool, waitsForTasksThatNoWorkerHasTakenYet) {
  std::atomic<int> done = 0;
  {
    ThreadPool pool;
    for (int at = 0; at < 10; ++at) pool.run([&done] { ++done; }, 1);
  }
  EXPECT_EQ(done, 10);
}

/// From here on the process gets no more threads. The superuser is above that limit. Nor does the
/// leak check at the end get one: such a process has to go without it, by _exit.
void forbidThreads() {
  if (geteuid() == 0 && setuid(65534) != 0) _exit(2);
  const rlimit none{0, 0};
  if (setrlimit(RLIMIT_NPROC, &none) != 0) _exit(2);
}

[[noreturn]] void runWithoutThreads() {
  forbidThreads();
  TaskGroup<std::thread::id> group;
  group.add([] { return std::this_thread::get_id(); });
  group.add([] { return std::this_thread::get_id(); });
  for (int at = 0; at < 2; ++at) {
    if (group.next() != std::this_thread::get_id()) _exit(1);
  }
  _exit(0);
}

[[noreturn]] void runWithOneThread() {
  std::promise<void> release;
  TaskGroup<std::thread::id> group;
  group.add([released = release.get_future().share()] {
    released.wait();
    return std::this_thread::get_id();
  });
  forbidThreads();
  group.add([] { return std::this_thread::get_id(); });
  release.set_value();
  const auto first = group.next();
  _exit(first.has_value() && first == group.next() && first != std::this_thread::get_id() ? 0 : 1);
}

TEST(TaskGroupDeathTest, runsItsTasksItselfWhereTheSystemGivesNoThread) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(runWithoutThreads(), testing::ExitedWithCode(0), "");
}

TEST(TaskGroupDeathTest, keepsTasksForTheThreadsThatThereAreWhereTheSystemGivesNoMore) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(runWithOneThread(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace orvane
