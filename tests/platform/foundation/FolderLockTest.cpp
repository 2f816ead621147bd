#include "platform/foundation/FolderLock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <optional>
#include <thread>
#include <vector>

#include "support/TemporaryFolder.h"

namespace orvane {
namespace {

TEST(FolderLock, isHeldByOneAtATime) {
  const test::TemporaryFolder folder;
  std::atomic<int> holders = 0;
  std::atomic<int> mostHolders = 0;
  std::vector<std::jthread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int time = 0; time < 5; ++time) {
        const FolderLock lock(folder.path());
        mostHolders = std::max(mostHolders.load(), ++holders);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        --holders;
      }
    });
  }
  threads.clear();
  EXPECT_EQ(mostHolders, 1);
  EXPECT_EQ(folder.names(), std::vector<std::string>());
}

TEST(FolderLock, isDoneWithoutWhereThereIsNoFolder) {
  const test::TemporaryFolder folder;
  test::writeFile(folder / "file", "");
  EXPECT_NO_THROW(FolderLock(folder / "missing"));
  EXPECT_NO_THROW(FolderLock(folder / "file"));
}

}  // namespace
}  // namespace orvane
