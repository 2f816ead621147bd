#include "platform/foundation/Files.h"
#include "platform/foundation/SourceFile.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "platform/foundation/FileError.h"
#include "support/TemporaryFolder.h"

namespace orvane {
namespace {

using test::TemporaryFolder;
using test::writeFile;

std::string text(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

int readingError(const std::string& path) {
  try {
    Files::readWhole(path);
  } catch (const FileError& error) {
    return error.errorNumber();
  }
  return 0;
}

TEST(Files, readsARegularFileWhole) {
  const TemporaryFolder folder;
  const std::string content("a\0b\xFF\n", 5);
  writeFile(folder / "file", content);
  EXPECT_EQ(text(Files::readWhole(folder / "file")), content);
  std::filesystem::create_symlink("file", folder / "link");
  EXPECT_EQ(text(Files::readWhole(folder / "link")), content);
}

TEST(Files, readsAFileUnderANameThatIsNotUTF8) {
  const TemporaryFolder folder;
  writeFile(folder / "caf\xE9", "café");
  EXPECT_EQ(text(Files::readWhole(folder / "caf\xE9")), "café");
}

TEST(Files, readsAnEmptyFile) {
  const TemporaryFolder folder;
  writeFile(folder / "empty", "");
  EXPECT_TRUE(Files::readWhole(folder / "empty").empty());
  EXPECT_TRUE(Files::readWhole("/dev/null").empty());
}

TEST(Files, readsAPipeUntilItsEnd) {
  const TemporaryFolder folder;
  const std::string path = folder / "pipe";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const std::string content(300'000, 'x');
  const std::jthread writer([&] { writeFile(path, content); });
  EXPECT_EQ(text(Files::readWhole(path)), content);
}

TEST(Files, readsFilesThatSayTheyHaveNoSize) {
  struct stat status = {};
  if (stat("/proc/version", &status) != 0) GTEST_SKIP() << "no /proc";
  ASSERT_EQ(status.st_size, 0);
  EXPECT_EQ(Files::readWhole("/proc/version"), test::readFile("/proc/version"));
  EXPECT_FALSE(Files::readWhole("/proc/version").empty());
}

TEST(Files, saysWhyAFileCannotBeRead) {
  const TemporaryFolder folder;
  EXPECT_EQ(readingError(folder / "missing"), ENOENT);
  EXPECT_EQ(readingError(""), ENOENT);
  EXPECT_EQ(readingError(folder.path()), EISDIR);
  writeFile(folder / "file", "x");
  EXPECT_EQ(readingError(folder / "file/below"), ENOTDIR);
  EXPECT_EQ(readingError(folder / std::string(256, 'x')), ENAMETOOLONG);
}

TEST(Files, readsNoFileAboveTheLimit) {
  const TemporaryFolder folder;
  writeFile(folder / "sparse", "");
  std::filesystem::resize_file(folder / "sparse", SourceFile::maximumBytes + 1);
  EXPECT_EQ(readingError(folder / "sparse"), EFBIG);
}

TEST(Files, tellTheSizeThroughLinks) {
  const TemporaryFolder folder;
  writeFile(folder / "file", "12345");
  std::filesystem::create_symlink("file", folder / "link");
  EXPECT_EQ(Files::size(folder / "file"), 5);
  EXPECT_EQ(Files::size(folder / "link"), 5);
  EXPECT_FALSE(Files::size(folder / "missing").has_value());
}

TEST(Files, knowFoldersFromEverythingElse) {
  const TemporaryFolder folder;
  writeFile(folder / "file", "x");
  std::filesystem::create_directory_symlink(".", folder / "link");
  EXPECT_TRUE(Files::isFolder(folder.path()));
  EXPECT_TRUE(Files::isFolder(folder / "link"));
  EXPECT_FALSE(Files::isFolder(folder / "file"));
  EXPECT_FALSE(Files::isFolder(folder / "missing"));
}

TEST(Files, createAFolderAndTheMissingOnesAboveIt) {
  const TemporaryFolder folder;
  EXPECT_TRUE(Files::createFolders(folder / "a/b/c"));
  EXPECT_TRUE(Files::isFolder(folder / "a/b/c"));
  EXPECT_TRUE(Files::createFolders(folder / "a/b/c"));
  EXPECT_TRUE(Files::createFolders(folder / "d/"));
  EXPECT_TRUE(Files::isFolder(folder / "d"));
}

TEST(Files, createNoFolderWhereAFileIs) {
  const TemporaryFolder folder;
  writeFile(folder / "file", "x");
  EXPECT_FALSE(Files::createFolders(folder / "file"));
  EXPECT_FALSE(Files::createFolders(folder / "file/below"));
  EXPECT_EQ(text(Files::readWhole(folder / "file")), "x");
}

#ifndef __APPLE__

/// An environment variable of this process, put back at the end.
class Variable {
 public:
  Variable(const char* name, const char* value) : name_(name) {
    if (const char* former = std::getenv(name)) former_ = former;
    set(value);
  }
  ~Variable() { set(former_ ? former_->c_str() : nullptr); }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

 private:
  void set(const char* value) const {
    if (value == nullptr) {
      unsetenv(name_);
    } else {
      setenv(name_, value, 1);
    }
  }

  const char* name_;
  std::optional<std::string> former_;
};

TEST(Files, keepApplicationDataWhereXDGSays) {
  const Variable home("HOME", "/home/me");
  const Variable data("XDG_DATA_HOME", "/data/me");
  EXPECT_EQ(Files::applicationSupportFolder(), "/data/me");
}

TEST(Files, keepApplicationDataBelowTheHomeFolderWhereXDGSaysNothing) {
  const Variable home("HOME", "/home/me");
  for (const char* value : {static_cast<const char*>(nullptr), "", "relative/folder"}) {
    const Variable data("XDG_DATA_HOME", value);
    EXPECT_EQ(Files::applicationSupportFolder(), "/home/me/.local/share");
  }
}

TEST(Files, askThePasswordDatabaseForTheHomeFolderLast) {
  const Variable data("XDG_DATA_HOME", nullptr);
  const passwd* user = getpwuid(getuid());
  if (user == nullptr) GTEST_SKIP() << "a user without an entry";
  const std::string expected = std::string(user->pw_dir) + "/.local/share";
  for (const char* value : {static_cast<const char*>(nullptr), ""}) {
    const Variable home("HOME", value);
    EXPECT_EQ(Files::applicationSupportFolder(), expected);
  }
}

[[noreturn]] void lookForAFolderAsNobodyKnown() {
  unsetenv("HOME");
  unsetenv("XDG_DATA_HOME");
  if (setuid(3'999'999'999) != 0) std::exit(2);
  std::exit(Files::applicationSupportFolder() ? 1 : 0);
}

TEST(FilesDeathTest, haveNoPlaceForApplicationDataOfAUserWithoutAHome) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser can become an unknown user";
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(lookForAFolderAsNobodyKnown(), testing::ExitedWithCode(0), "");
}

#endif

}  // namespace
}  // namespace orvane
