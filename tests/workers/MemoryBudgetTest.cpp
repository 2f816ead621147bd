#include "workers/MemoryBudget.h"

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <thread>
#include <vector>

namespace orvane {
namespace {

using Share = MemoryBudget::Share;

TEST(MemoryBudget, givesSharesThatFitAtOnce) {
  MemoryBudget budget(100);
  Share first(budget, 60);
  Share second(budget, 40);
  EXPECT_EQ(first.bytes(), 60u);
  EXPECT_EQ(second.bytes(), 40u);
}

TEST(MemoryBudget, givesAShareThatNeverFitsToOneThatIsAlone) {
  MemoryBudget budget(100);
  const Share share(budget, 500);
  EXPECT_EQ(share.bytes(), 500u);
}

TEST(MemoryBudget, neverHasMoreThanFitsAtWork) {
  MemoryBudget budget(100);
  std::atomic<int> taken = 0;
  std::atomic<int> most = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 16; ++i) {
    threads.emplace_back([&, bytes = 10 + i * 5] {
      for (int round = 0; round < 50; ++round) {
        const Share share(budget, static_cast<std::uint64_t>(bytes));
        const int now = taken += bytes;
        for (int before = most; before < now && !most.compare_exchange_weak(before, now);) continue;
        std::this_thread::yield();
        taken -= bytes;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_LE(most, 100);
  EXPECT_GE(most, 85);
}

TEST(MemoryBudget, servesThoseThatWaitInTheOrderInWhichTheyCame) {
  MemoryBudget budget(100);
  std::vector<int> order;
  std::thread large, small;
  {
    const Share held(budget, 50);
    large = std::thread([&] {
      const Share share(budget, 100);
      order.push_back(1);
    });
    while (budget.waiting() < 1) std::this_thread::yield();
    small = std::thread([&] {
      const Share share(budget, 10);  // would fit beside the one that is held
      order.push_back(2);
    });
    while (budget.waiting() < 2) std::this_thread::yield();
    EXPECT_TRUE(order.empty());
  }
  large.join();
  small.join();
  EXPECT_EQ(order, (std::vector{1, 2}));
}

TEST(MemoryBudget, letsOneGrowWhereAllWaitToGrow) {
  MemoryBudget budget(100);
  std::atomic<int> grown = 0;
  std::atomic<int> atWork = 0;
  std::barrier allHaveShares(4);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      Share share(budget, 25);
      allHaveShares.arrive_and_wait();
      share.exchange(10, 90);  // four of them would wait for each other
      EXPECT_EQ(++atWork, 1);
      std::this_thread::yield();
      --atWork;
      ++grown;
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(grown, 4);
}

}  // namespace
}  // namespace orvane
