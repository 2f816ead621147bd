#include "platform/foundation/SourceFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <thread>

#include "platform/foundation/FileError.h"
#include "support/TemporaryFolder.h"

namespace orvane {
namespace {

struct SourceFileTest : testing::Test {
  test::TemporaryFolder folder;

  int errorOf(const std::string& path) const {
    try {
      SourceFile::open(path).readWhole();
    } catch (const FileError& error) {
      return error.errorNumber();
    }
    return 0;
  }
};

TEST_F(SourceFileTest, knowsTheSizeOfRegularFilesOnly) {
  test::writeFile(folder / "a", Bytes{1, 2, 3});
  const SourceFile file = SourceFile::open(folder / "a");
  EXPECT_EQ(file.size(), 3u);
  EXPECT_EQ(file.readWhole(), (Bytes{1, 2, 3}));
  EXPECT_EQ(SourceFile::open("/dev/null").size(), 0u);
}

TEST_F(SourceFileTest, doesNotWaitForAWriterThatDoesNotCome) {
  ASSERT_EQ(mkfifo((folder / "fifo").c_str(), 0600), 0);
  EXPECT_EQ(errorOf(folder / "fifo"), ETIMEDOUT);
}

TEST_F(SourceFileTest, readsAFIFOUntilItsWriterIsDone) {
  ASSERT_EQ(mkfifo((folder / "fifo").c_str(), 0600), 0);
  const Bytes bytes(300'000, 7);
  std::thread writer([&] { test::writeFile(folder / "fifo", bytes); });
  EXPECT_EQ(SourceFile::open(folder / "fifo").readWhole(), bytes);
  writer.join();
}

TEST_F(SourceFileTest, saysWhyAFileCannotBeRead) {
  EXPECT_EQ(errorOf(folder / "missing"), ENOENT);
  EXPECT_EQ(errorOf(folder.path().string()), EISDIR);
}

}  // namespace
}  // namespace orvane
