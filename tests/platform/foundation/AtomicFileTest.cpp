#include "platform/foundation/AtomicFile.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <thread>
#include <vector>

#include "platform/foundation/FileError.h"
#include "platform/foundation/Files.h"
#include "support/TemporaryFolder.h"

namespace orvane {
namespace {

using test::TemporaryFolder;
using test::writeFile;
using testing::ExitedWithCode;
using testing::KilledBySignal;
using Names = std::vector<std::string>;

ByteView view(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string content(const std::string& path) {
  const Bytes bytes = test::readFile(path);
  return {bytes.begin(), bytes.end()};
}

mode_t permissions(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

/// The error number of a write of `text`, 0 when it went well.
int writingError(const std::string& path, std::string_view text = "new") {
  try {
    Files::writeAtomically(path, view(text));
  } catch (const FileError& error) {
    return error.errorNumber();
  }
  return 0;
}

void commit(AtomicFile& file) {
  file.flush();
  file.move();
}

class Umask {
 public:
  explicit Umask(mode_t mask) : former_(umask(mask)) {}
  ~Umask() { umask(former_); }
  Umask(const Umask&) = delete;
  Umask& operator=(const Umask&) = delete;

 private:
  mode_t former_;
};

TEST(AtomicFile, appearsWithItsWholeContent) {
  const TemporaryFolder folder;
  const std::string text(1'000'000, 'x');
  EXPECT_EQ(writingError(folder / "file", text), 0);
  EXPECT_EQ(content(folder / "file"), text);
  EXPECT_EQ(writingError(folder / "empty", ""), 0);
  EXPECT_EQ(content(folder / "empty"), "");
  EXPECT_EQ(folder.names(), (Names{"empty", "file"}));
}

TEST(AtomicFile, isNotThereBeforeItIsCommitted) {
  const TemporaryFolder folder;
  writeFile(folder / "file", "old");
  AtomicFile file(folder / "file");
  file.write(view("ne"));
  file.write(view("w"));
  EXPECT_EQ(content(folder / "file"), "old");
  commit(file);
  EXPECT_EQ(content(folder / "file"), "new");
  EXPECT_EQ(folder.names(), Names{"file"});
}

TEST(AtomicFile, isHiddenUntilItIsCommitted) {
  const TemporaryFolder folder;
  const AtomicFile file(folder / "file");
  ASSERT_EQ(folder.names().size(), 1u);
  EXPECT_TRUE(folder.names()[0].starts_with('.'));
}

TEST(AtomicFile, leavesNothingWithoutACommit) {
  const TemporaryFolder folder;
  writeFile(folder / "file", "old");
  { AtomicFile(folder / "file").write(view("new")); }
  EXPECT_EQ(content(folder / "file"), "old");
  EXPECT_EQ(folder.names(), Names{"file"});
}

TEST(AtomicFile, keepsThePermissionsOfTheFileThatItReplaces) {
  const Umask mask(022);
  const TemporaryFolder folder;
  for (const mode_t mode : {0600, 0666, 0444, 0751}) {
    writeFile(folder / "file", "old");
    chmod((folder / "file").c_str(), mode);
    EXPECT_EQ(writingError(folder / "file"), 0);
    EXPECT_EQ(permissions(folder / "file"), mode);
    EXPECT_EQ(content(folder / "file"), "new");
    std::filesystem::remove(folder / "file");
  }
}

TEST(AtomicFile, isNeverMoreOpenThanTheFileThatItReplaces) {
  const Umask mask(022);
  const TemporaryFolder folder;
  writeFile(folder / "file", "old");
  chmod((folder / "file").c_str(), 0600);
  const AtomicFile file(folder / "file");
  EXPECT_EQ(permissions(folder / folder.names()[0]), 0600u);
}

TEST(AtomicFile, honoursTheUmaskWhereItReplacesNothing) {
  const TemporaryFolder folder;
  for (const mode_t bits : {022, 077, 0}) {
    const Umask mask(bits);
    EXPECT_EQ(writingError(folder / "file"), 0);
    EXPECT_EQ(permissions(folder / "file"), 0666u & ~bits);
    std::filesystem::remove(folder / "file");
  }
}

TEST(AtomicFile, takesTheLongestName) {
  const TemporaryFolder folder;
  const std::string name(255, 'x');
  EXPECT_EQ(writingError(folder / name), 0);
  EXPECT_EQ(folder.names(), Names{name});
  EXPECT_EQ(writingError(folder / (name + "x")), ENAMETOOLONG);
  EXPECT_EQ(folder.names(), Names{name});
}

TEST(AtomicFile, replacesASymbolicLinkItself) {
  const TemporaryFolder folder;
  writeFile(folder / "target", "old");
  std::filesystem::create_symlink("target", folder / "link");
  EXPECT_EQ(writingError(folder / "link"), 0);
  EXPECT_FALSE(std::filesystem::is_symlink(folder / "link"));
  EXPECT_EQ(content(folder / "link"), "new");
  EXPECT_EQ(content(folder / "target"), "old");
}

TEST(AtomicFile, takesThePermissionsOfTheFileBehindASymbolicLink) {
  const Umask mask(022);
  const TemporaryFolder folder;
  writeFile(folder / "target", "old");
  chmod((folder / "target").c_str(), 0600);
  std::filesystem::create_symlink("target", folder / "link");
  EXPECT_EQ(writingError(folder / "link"), 0);
  EXPECT_FALSE(std::filesystem::is_symlink(folder / "link"));
  EXPECT_EQ(permissions(folder / "link"), 0600u);

  std::filesystem::create_symlink("nowhere", folder / "broken");
  EXPECT_EQ(writingError(folder / "broken"), 0);
  EXPECT_EQ(permissions(folder / "broken"), 0644u);
}

TEST(AtomicFile, replacesNoFolder) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder / "sub");
  EXPECT_EQ(writingError(folder / "sub"), EISDIR);
  EXPECT_EQ(folder.names(), Names{"sub"});
  EXPECT_TRUE(Files::isFolder(folder / "sub"));
}

TEST(AtomicFile, failsWhereItsFolderIsNone) {
  const TemporaryFolder folder;
  writeFile(folder / "file", "old");
  EXPECT_EQ(writingError(folder / "missing/file"), ENOENT);
  EXPECT_EQ(writingError(folder / "file/below"), ENOTDIR);
  EXPECT_EQ(folder.names(), Names{"file"});
}

/// Makes the superuser a user like others; for the others it does nothing.
class OrdinaryUser {
 public:
  OrdinaryUser() {
    if (isSuperuser_) {
      EXPECT_EQ(seteuid(65534), 0);
    }
  }
  ~OrdinaryUser() {
    if (isSuperuser_) {
      EXPECT_EQ(seteuid(0), 0);
    }
  }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;

 private:
  const bool isSuperuser_ = geteuid() == 0;
};

TEST(AtomicFile, failsInAReadOnlyFolderAndLeavesTheOldFile) {
  const TemporaryFolder folder;
  writeFile(folder / "file", "old");
  chmod(folder.path().c_str(), 0555);
  {
    const OrdinaryUser user;
    EXPECT_EQ(writingError(folder / "file"), EACCES);
  }
  chmod(folder.path().c_str(), 0755);
  EXPECT_EQ(content(folder / "file"), "old");
  EXPECT_EQ(folder.names(), Names{"file"});
}

/// No file can grow past `bytes` while this lives; a write that tries fails, with EFBIG.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : formerAction_(signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &former_);
    const rlimit limit{bytes, former_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &former_);
    signal(SIGXFSZ, formerAction_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit former_ = {};
  void (*formerAction_)(int);
};

TEST(AtomicFile, leavesNothingWhenItFailsHalfway) {
  const TemporaryFolder folder;
  writeFile(folder / "file", "old");
  int error = 0;
  {
    const FileSizeLimit limit(4096);
    error = writingError(folder / "file", std::string(65536, 'x'));
  }
  EXPECT_EQ(error, EFBIG);
  EXPECT_EQ(content(folder / "file"), "old");
  EXPECT_EQ(folder.names(), Names{"file"});
}

TEST(AtomicFile, isSeenWholeByReadersWhileSeveralWritersReplaceIt) {
  const TemporaryFolder folder;
  const std::string path = folder / "file";
  Files::writeAtomically(path, view("a"));
  std::atomic<bool> isOver = false;
  std::vector<std::jthread> writers;
  for (const char letter : {'a', 'b', 'c'}) {
    writers.emplace_back([&path, &isOver, letter] {
      for (std::size_t size = 1; !isOver; size = size * 7 % 100'003) {
        Files::writeAtomically(path, view(std::string(size, letter)));
      }
    });
  }
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(300);
  while (std::chrono::steady_clock::now() < end) {
    const std::string text = content(path);
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(text.find_first_not_of(text[0]), std::string::npos);
  }
  isOver = true;
  writers.clear();
  EXPECT_EQ(folder.names(), Names{"file"});
}

/// One folder for a death test and for the processes that run the same test from its beginning:
/// the test makes the folder, they find its name in the environment.
class SharedFolder {
 public:
  SharedFolder() {
    if (std::getenv(variable) == nullptr) {
      own_.emplace();
      setenv(variable, own_->path().c_str(), 1);
    }
    path_ = std::getenv(variable);
  }
  ~SharedFolder() {
    if (own_) unsetenv(variable);
  }
  SharedFolder(const SharedFolder&) = delete;
  SharedFolder& operator=(const SharedFolder&) = delete;

  std::string operator/(const std::string& name) const { return path_ / name; }
  Names names() const {
    Names found;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
      found.push_back(entry.path().filename());
    }
    return found;
  }

 private:
  static constexpr const char* variable = "ORVANE_TEST_SHARED_FOLDER";
  std::optional<TemporaryFolder> own_;
  std::filesystem::path path_;
};

class AtomicFileDeathTest : public testing::Test {
 protected:
  AtomicFileDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  SharedFolder folder_;
};

[[noreturn]] void getSignal(int signal, const std::string& path) {
  AtomicFile first(path);
  first.write(view("half"));
  const AtomicFile second(path + "2");
  kill(getpid(), signal);
  for (;;) pause();
}

TEST_F(AtomicFileDeathTest, leavesNothingWhenASignalEndsTheProcess) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    EXPECT_EXIT(getSignal(signal, folder_ / "file"), KilledBySignal(signal), "");
    EXPECT_EQ(folder_.names(), Names{});
  }
}

[[noreturn]] void getSignalAfterCommit(const std::string& path) {
  AtomicFile file(path);
  file.write(view("new"));
  commit(file);
  kill(getpid(), SIGTERM);
  for (;;) pause();
}

TEST_F(AtomicFileDeathTest, staysWhenASignalComesAfterItsCommit) {
  EXPECT_EXIT(getSignalAfterCommit(folder_ / "file"), KilledBySignal(SIGTERM), "");
  EXPECT_EQ(folder_.names(), Names{"file"});
  EXPECT_EQ(content(folder_ / "file"), "new");
}

[[noreturn]] void getSignalAmidManyWriters(const SharedFolder& folder, int milliseconds) {
  std::vector<std::thread> writers;
  for (const char letter : {'a', 'b', 'c', 'd'}) {
    writers.emplace_back([&folder, letter] {
      for (int at = 0;; at = (at + 1) % 5) {
        const std::string name = letter + std::to_string(at);
        Files::writeAtomically(folder / name, view(std::string(1000, letter)));
      }
    });
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  kill(getpid(), SIGTERM);
  for (;;) pause();
}

TEST_F(AtomicFileDeathTest, leavesWholeFilesOnlyWhenASignalComesAmidManyWriters) {
  for (int time = 0; time < 6; ++time) {
    EXPECT_EXIT(getSignalAmidManyWriters(folder_, 10 + 7 * time), KilledBySignal(SIGTERM), "");
    for (const std::string& name : folder_.names()) {
      EXPECT_EQ(content(folder_ / name), std::string(1000, name[0])) << name;
    }
  }
}

[[noreturn]] void ignoreSignal(const std::string& path) {
  signal(SIGHUP, SIG_IGN);
  AtomicFile file(path);
  file.write(view("new"));
  kill(getpid(), SIGHUP);
  commit(file);
  std::exit(0);
}

TEST_F(AtomicFileDeathTest, letsAnIgnoredSignalStayIgnored) {
  EXPECT_EXIT(ignoreSignal(folder_ / "file"), ExitedWithCode(0), "");
  EXPECT_EQ(folder_.names(), Names{"file"});
}

[[noreturn]] void handleSignal(const std::string& path) {
  signal(SIGTERM, [](int) { _exit(7); });
  const AtomicFile file(path);
  kill(getpid(), SIGTERM);
  for (;;) pause();
}

TEST_F(AtomicFileDeathTest, letsAHandlerOfTheProgramStay) {
  EXPECT_EXIT(handleSignal(folder_ / "file"), ExitedWithCode(7), "");
}

}  // namespace
}  // namespace orvane
