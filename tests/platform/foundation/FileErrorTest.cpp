#include "platform/foundation/FileError.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <thread>
#include <vector>

namespace orvane {
namespace {

TEST(FileError, carriesTheSystemsTextForItsNumber) {
  EXPECT_EQ(FileError(ENOENT).localizedDescription(), std::strerror(ENOENT));
  EXPECT_STREQ(FileError(EACCES).what(), std::strerror(EACCES));
  EXPECT_EQ(FileError(ENOSPC).errorNumber(), ENOSPC);
}

TEST(FileError, mayNameThePath) {
  const FileError error(ENOTDIR, "/a/b");
  EXPECT_EQ(error.localizedDescription(), std::string("/a/b : ") + std::strerror(ENOTDIR));
  EXPECT_EQ(error.errorNumber(), ENOTDIR);
}

TEST(FileError, hasATextForNumbersThatTheSystemDoesNotKnow) {
  EXPECT_FALSE(FileError(123456).localizedDescription().empty());
}

TEST(FileError, canBeMadeOnManyThreads) {
  const std::string unknown = FileError(100'000).localizedDescription();
  std::vector<std::jthread> threads;
  for (int at = 0; at < 4; ++at) {
    threads.emplace_back([&] {
      for (int time = 0; time < 100; ++time) {
        EXPECT_EQ(FileError(100'000).localizedDescription(), unknown);
      }
    });
  }
}

}  // namespace
}  // namespace orvane
