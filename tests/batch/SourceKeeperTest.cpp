#include "batch/SourceKeeper.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <set>

#include "batch/BatchRunner.h"
#include "platform/foundation/Files.h"
#include "support/TemporaryFolder.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

/// Batches in a folder that holds sources and receives outputs. Each file is "compressed" into its
/// own text after a "<"; a text of "bad" fails.
struct SourceKeeperTest : testing::Test {
  test::TemporaryFolder folder;

  void write(std::string_view name, std::string_view text) {
    fs::create_directories(fs::path(folder / name).parent_path());
    test::writeFile(folder / name, text);
  }

  std::string text(std::string_view name) const {
    const Bytes bytes = test::readFile(folder / name);
    return {bytes.begin(), bytes.end()};
  }

  /// Runs the batch with `jobs`. With more than one, a file named like `slowName` is read when all
  /// other files are done.
  std::vector<ImageCompressionResult> run(Names names, std::int64_t jobs,
                                          const std::string& slowName) {
    for (std::string& name : names) name = folder / name;
    done_ = 0;
    writtenNames_.clear();
    const auto compress = [&](const std::string& path, const FileURL& to, ImageFormat, double,
                              const std::optional<std::string>& name) {
      if (jobs > 1 && path == folder / slowName) waitUntilDone(names.size() - 1);
      const auto result = compressed(path, to.appending(*name).path());
      markDone(*name);
      return ImageCompressor::Uncommitted{.result = result};
    };
    told_.clear();
    const auto tell = [&](std::size_t index, const ImageCompressionResult& result) {
      told_.push_back(index);
      EXPECT_TRUE(result.error || fs::is_regular_file(*result.destination)) << index;
    };
    return compressAll(names, FileURL::fromPath(folder.path().string()), ImageFormat::jpeg, 75,
                       {.jobs = jobs,
                        .onResult = tell,
                        .isStopped = [&] { return !told_.empty() && told_.back() == lastIndex; }},
                       compress);
  }

  /// Called in place of the end of `compressed`, before its file counts as done.
  std::function<void(const std::string& path)> afterReading = [](const std::string&) {};

  /// A batch is stopped when this file is done.
  std::optional<std::size_t> lastIndex;

  std::multiset<std::string> writtenNames() const { return writtenNames_; }

  /// The files in the order in which they were told.
  std::vector<std::size_t> told() const { return told_; }

 private:
  ImageCompressionResult compressed(const std::string& path, const std::string& destination) {
    try {
      const Bytes source = Files::readWhole(path);
      const std::string output = "<" + std::string(source.begin(), source.end());
      if (output == "<bad") throw std::runtime_error("bad");
      afterReading(path);
      Files::writeAtomically(destination,
                             {reinterpret_cast<const std::uint8_t*>(output.data()), output.size()});
    } catch (const std::exception& error) {
      return {.path = path, .originalSizeBytes = 7, .error = error.what()};
    }
    return {.path = path, .originalSizeBytes = 7, .destination = destination};
  }

  void waitUntilDone(std::size_t count) {
    std::unique_lock lock(mutex_);
    EXPECT_TRUE(changed_.wait_for(lock, std::chrono::seconds(20), [&] { return done_ >= count; }));
  }

  void markDone(const std::string& name) {
    const std::lock_guard lock(mutex_);
    ++done_;
    writtenNames_.insert(name);
    changed_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::size_t done_ = 0;
  std::multiset<std::string> writtenNames_;
  std::vector<std::size_t> told_;
};

const std::vector<std::int64_t> jobCounts{1, 2, 8};

TEST_F(SourceKeeperTest, letsASourceBeReadBeforeAnotherOutputReplacesIt) {
  for (const std::int64_t jobs : jobCounts) {
    write("x/a.jpg", "from x");
    write("a.jpg", "own");
    write("b.jpg", "third");
    const auto results = run({"x/a.jpg", "b.jpg", "a.jpg"}, jobs, "a.jpg");
    EXPECT_EQ(text("a.jpg"), "<from x");
    EXPECT_EQ(text("a-2.jpg"), "<own");
    EXPECT_EQ(text("b.jpg"), "<third");
    EXPECT_EQ(results[0].destination, folder / "a.jpg");
    EXPECT_EQ(results[2].destination, folder / "a-2.jpg");
    EXPECT_EQ(folder.names(), (Names{"a-2.jpg", "a.jpg", "b.jpg", "x"}));
    fs::remove(folder / "a-2.jpg");
  }
}

TEST_F(SourceKeeperTest, letsTwoSourcesBeReplacedByEachOther) {
  fs::create_directory(folder / "x");
  fs::create_symlink("../b-2.jpg", folder / "x/b.jpg");
  for (const std::int64_t jobs : jobCounts) {
    write("b-2.jpg", "second");
    write("b.jpg", "first");
    run({"x/b.jpg", "b.jpg"}, jobs, "b.jpg");
    EXPECT_EQ(text("b.jpg"), "<second");
    EXPECT_EQ(text("b-2.jpg"), "<first");
    EXPECT_EQ(folder.names(), (Names{"b-2.jpg", "b.jpg", "x"}));
  }
}

TEST_F(SourceKeeperTest, knowsASourceUnderEveryName) {
  for (const std::string spelling : {"symbolic.jpg", "hard.jpg", "x/../a.jpg", "./a.jpg"}) {
    for (const std::int64_t jobs : jobCounts) {
      write("x/a.jpg", "from x");
      write("a.jpg", "own");
      fs::create_symlink("a.jpg", folder / "symbolic.jpg");
      fs::create_hard_link(folder / "a.jpg", folder / "hard.jpg");
      const auto results = run({"x/a.jpg", spelling}, jobs, spelling);
      EXPECT_EQ(text("a.jpg"), "<from x") << spelling;
      const fs::path other = results[1].destination.value();
      EXPECT_EQ(text(other.filename().string()), "<own") << spelling;
      for (const std::string& name : folder.names()) fs::remove_all(folder / name);
    }
  }
}

TEST_F(SourceKeeperTest, letsEveryFileReadASourceThatIsGivenTwice) {
  for (const std::int64_t jobs : jobCounts) {
    write("a.jpg", "own");
    run({"a.jpg", "./a.jpg"}, jobs, "./a.jpg");
    EXPECT_EQ(text("a.jpg"), "<own");
    EXPECT_EQ(text("a-2.jpg"), "<own");
  }
}

TEST_F(SourceKeeperTest, leavesASourceMissingThatWasMissing) {
  fs::create_symlink("a.jpg", folder / "link.jpg");
  for (const std::int64_t jobs : jobCounts) {
    write("x/a.png", "from x");
    const auto results = run({"x/a.png", "a.jpg", "link.jpg"}, jobs, "a.jpg");
    EXPECT_EQ(text("a.jpg"), "<from x");
    EXPECT_EQ(results[1].error, std::strerror(ENOENT));
    EXPECT_EQ(results[2].error, std::strerror(ENOENT));
    EXPECT_EQ(folder.names(), (Names{"a.jpg", "link.jpg", "x"}));
    fs::remove(folder / "a.jpg");
  }
}

TEST_F(SourceKeeperTest, leavesTheSourceOfAFileThatFails) {
  for (const std::int64_t jobs : jobCounts) {
    write("x/a.jpg", "from x");
    write("a.jpg", "bad");
    write("x/b.jpg", "bad");
    write("b.jpg", "own");
    const auto results = run({"x/b.jpg", "b.jpg", "x/a.jpg", "a.jpg"}, jobs, "a.jpg");
    EXPECT_EQ(text("b.jpg"), "own");
    EXPECT_EQ(text("b-2.jpg"), "<own");
    EXPECT_EQ(text("a.jpg"), "<from x");
    EXPECT_EQ(results[0].error, "bad");
    EXPECT_EQ(results[2].error, std::nullopt);
    EXPECT_EQ(results[3].error, "bad");
    EXPECT_EQ(folder.names(), (Names{"a.jpg", "b-2.jpg", "b.jpg", "x"}));
  }
}

TEST_F(SourceKeeperTest, hidesNoOutputWithoutNeed) {
  write("x/c.jpg", "3");
  write("a.jpg", "1");
  write("b.jpg", "2");
  write("c.jpg", "no source of this batch");
  run({"a.jpg", "b.jpg", "x/c.jpg"}, 3, "a.jpg");
  EXPECT_EQ(writtenNames(), (std::multiset<std::string>{"a.jpg", "b.jpg", "c.jpg"}));
  // One file after another: the source has been read by then.
  write("x/a.jpg", "4");
  fs::create_symlink("a.jpg", folder / "link.jpg");
  run({"link.jpg", "x/a.jpg"}, 1, "");
  EXPECT_EQ(writtenNames(), (std::multiset<std::string>{"link.jpg", "a.jpg"}));
}

TEST_F(SourceKeeperTest, keepsThePermissionsOfWhatAnOutputReplaces) {
  write("x/a.jpg", "from x");
  write("a.jpg", "own");
  fs::permissions(folder / "a.jpg", fs::perms::owner_read | fs::perms::owner_write);
  afterReading = [&](const std::string&) {
    for (const std::string& name : folder.names()) {
      if (!name.starts_with(".orvane-")) continue;
      EXPECT_EQ(fs::status(folder / name).permissions(),
                fs::status(folder / "a.jpg").permissions());
    }
  };
  run({"x/a.jpg", "a.jpg"}, 1, "");
  EXPECT_EQ(text("a.jpg"), "<from x");
  EXPECT_EQ(fs::status(folder / "a.jpg").permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(SourceKeeperTest, tellsAnOutputThatWaitedWhenItHasItsName) {
  write("x/a.jpg", "from x");
  write("a.jpg", "own");
  write("b.jpg", "third");
  run({"x/a.jpg", "b.jpg", "a.jpg"}, 1, "");
  EXPECT_EQ(told(), (std::vector<std::size_t>{1, 2, 0}));
}

TEST_F(SourceKeeperTest, leavesTheSourceOfAFileThatAStopLeftOut) {
  write("x/a.jpg", "from x");
  write("a.jpg", "own");
  write("b.jpg", "third");
  lastIndex = 1;
  const auto results = run({"x/a.jpg", "b.jpg", "a.jpg"}, 1, "");
  EXPECT_EQ(text("a.jpg"), "own");
  EXPECT_EQ(text("b.jpg"), "<third");
  EXPECT_EQ(told(), (std::vector<std::size_t>{1, 0, 2}));
  EXPECT_EQ(results[0].error, std::strerror(ECANCELED));
  EXPECT_EQ(results[1].error, std::nullopt);
  EXPECT_EQ(results[2].error, std::strerror(ECANCELED));
  EXPECT_EQ(folder.names(), (Names{"a.jpg", "b.jpg", "x"}));
}

TEST_F(SourceKeeperTest, makesAFailureOfAnOutputThatCannotTakeItsName) {
  write("x/a.jpg", "from x");
  write("a.jpg", "own");
  afterReading = [&](const std::string& path) {
    if (path != folder / "a.jpg") return;
    fs::remove(path);
    fs::create_directory(path);
  };
  const auto results = run({"x/a.jpg", "a.jpg"}, 1, "");
  EXPECT_EQ(results[0],
            (ImageCompressionResult{.path = folder / "x/a.jpg",
                                    .originalSizeBytes = 7,
                                    .error = folder / "a.jpg : " + std::strerror(EISDIR)}));
  EXPECT_EQ(results[1].error, std::nullopt);
  EXPECT_EQ(folder.names(), (Names{"a-2.jpg", "a.jpg", "x"}));
}

}  // namespace
}  // namespace orvane
