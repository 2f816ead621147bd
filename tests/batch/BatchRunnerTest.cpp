#include "batch/BatchRunner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "pipeline/ImageCompressor.h"
#include "platform/foundation/ProcessInfo.h"
#include "support/TemporaryFolder.h"

namespace orvane {
namespace {

using Paths = std::vector<std::string>;

/// Stands in for the compressor and keeps a record of its calls.
class Recorder {
 public:
  /// Compresses nothing; `work`, if any, runs outside the lock with the recorder to wait on.
  CompressFile compressor(std::function<void(const std::string& path)> work = {}) {
    return [this, work = std::move(work)](const std::string& path, const FileURL& to,
                                          ImageFormat format, double quality,
                                          const std::optional<std::string>& name) {
      start(path, *name);
      if (work) work(path);
      finish();
      return ImageCompressor::Uncommitted{
          .result = {.path = path,
                     .originalSizeBytes = static_cast<std::int64_t>(quality),
                     .destination = to.appending(*name).path(),
                     .error = std::string(format.rawValue())}};
    };
  }

  /// Waits until `count` calls have been started, or have finished. Whether they have in time.
  bool waitForStarts(std::size_t count) {
    return waitUntil([&] { return started_.size() >= count; });
  }
  bool waitForFinishes(std::size_t count) {
    return waitUntil([&] { return finished_ >= count; });
  }

  // After the run.
  const Paths& started() const { return started_; }
  const Paths& names() const { return names_; }
  std::size_t mostAtOnce() const { return mostAtOnce_; }

 private:
  void start(const std::string& path, const std::string& name) {
    const std::lock_guard lock(mutex_);
    started_.push_back(path);
    names_.push_back(name);
    mostAtOnce_ = std::max(mostAtOnce_, started_.size() - finished_);
    changed_.notify_all();
  }

  void finish() {
    const std::lock_guard lock(mutex_);
    ++finished_;
    changed_.notify_all();
  }

  template <typename Condition>
  bool waitUntil(Condition condition) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(20), condition);
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  Paths started_;
  Paths names_;
  std::size_t finished_ = 0;
  std::size_t mostAtOnce_ = 0;
};

const FileURL folder = FileURL::fromPath("/out");

std::vector<ImageCompressionResult> run(const Paths& paths, std::int64_t jobs,
                                        const CompressFile& compress) {
  return compressAll(paths, folder, ImageFormat::jpeg, 75, {.jobs = jobs}, compress);
}

Paths pathsOf(const std::vector<ImageCompressionResult>& results) {
  Paths paths;
  for (const auto& result : results) paths.push_back(result.path);
  return paths;
}

TEST(BatchRunner, handsEveryFileItsPathFolderFormatQualityAndName) {
  Recorder recorder;
  const auto results = compressAll(Paths{"/photos/IMG_01.final.PNG", "x.png"}, folder,
                                   ImageFormat::heic, 42, {.jobs = 2}, recorder.compressor());
  ASSERT_EQ(results.size(), 2u);
  EXPECT_EQ(results[0], (ImageCompressionResult{.path = "/photos/IMG_01.final.PNG",
                                                .originalSizeBytes = 42,
                                                .destination = "/out/IMG_01.final.heic",
                                                .error = "heic"}));
  EXPECT_EQ(results[1].destination, "/out/x.heic");
}

TEST(BatchRunner, namesFilesInInputOrderHoweverTheyFinish) {
  Recorder recorder;
  const auto results = run({"x/photo.png", "y/photo.jpg", "z/PHOTO.webp", "photo-2"}, 4,
                           recorder.compressor([&](const std::string& path) {
                             if (path == "x/photo.png") recorder.waitForFinishes(3);
                           }));
  Paths destinations;
  for (const auto& result : results) destinations.push_back(*result.destination);
  EXPECT_EQ(destinations, (Paths{"/out/photo.jpg", "/out/photo-2.jpg", "/out/PHOTO-3.jpg",
                                 "/out/photo-2-2.jpg"}));
}

TEST(BatchRunner, startsAllFilesAtOnceWhereTheWindowIsWider) {
  Recorder recorder;
  const Paths paths{"a", "b", "c"};
  const auto results =
      run(paths, 8,
          recorder.compressor([&](const std::string&) { EXPECT_TRUE(recorder.waitForStarts(3)); }));
  EXPECT_EQ(pathsOf(results), paths);
  EXPECT_EQ(recorder.mostAtOnce(), 3u);
}

TEST(BatchRunner, keepsTheOtherPlacesGoingBesideASlowFile) {
  Recorder recorder;
  const Paths paths{"1", "2", "3", "4", "5", "6", "7", "8", "9", "10"};
  const auto results = run(paths, 2, recorder.compressor([&](const std::string& path) {
    EXPECT_TRUE(path != "1" || recorder.waitForFinishes(9));
  }));
  EXPECT_EQ(pathsOf(results), paths);
  EXPECT_EQ(recorder.mostAtOnce(), 2u);
  // The first two are started together; from then on there is one place to go to.
  EXPECT_TRUE(std::is_permutation(paths.begin(), paths.begin() + 2, recorder.started().begin()));
  EXPECT_TRUE(std::equal(paths.begin() + 2, paths.end(), recorder.started().begin() + 2));
}

TEST(BatchRunner, fillsItsWindowAndNeverExceedsIt) {
  for (const std::size_t jobs : {2u, 3u, 5u}) {
    Recorder recorder;
    const Paths paths(20, "a");
    run(paths, static_cast<std::int64_t>(jobs), recorder.compressor([&](const std::string&) {
      EXPECT_TRUE(recorder.waitForStarts(jobs));
    }));
    EXPECT_EQ(recorder.started().size(), 20u);
    EXPECT_EQ(recorder.mostAtOnce(), jobs);
  }
}

TEST(BatchRunner, takesOneFileAfterAnotherWithOneJob) {
  Recorder recorder;
  const Paths paths{"c", "a", "b", "a"};
  run(paths, 1, recorder.compressor());
  EXPECT_EQ(recorder.started(), paths);
  EXPECT_EQ(recorder.names(), (Paths{"c.jpg", "a.jpg", "b.jpg", "a-2.jpg"}));
  EXPECT_EQ(recorder.mostAtOnce(), 1u);
}

TEST(BatchRunner, givesNothingForNothing) {
  Recorder recorder;
  EXPECT_TRUE(run({}, 4, recorder.compressor()).empty());
  EXPECT_TRUE(recorder.started().empty());
}

TEST(BatchRunner, takesAnyNumberOfJobs) {
  Recorder recorder;
  EXPECT_EQ(run({"a", "b"}, INT64_MAX, recorder.compressor()).size(), 2u);
}

TEST(BatchRunner, goesOnPastAFileThatFails) {
  const auto results = run({"a", "bad", "c"}, 2,
                           [](const std::string& path, const FileURL&, ImageFormat, double,
                              const std::optional<std::string>&) {
                             ImageCompressionResult result{.path = path};
                             if (path == "bad") result.error = "broken";
                             return ImageCompressor::Uncommitted{.result = result};
                           });
  EXPECT_EQ(pathsOf(results), (Paths{"a", "bad", "c"}));
  EXPECT_EQ(results[0].error, std::nullopt);
  EXPECT_EQ(results[1].error, "broken");
  EXPECT_EQ(results[2].error, std::nullopt);
}

/// Writes a byte to each output; every third file's name is that of a folder by then.
TEST(BatchRunner, givesManyFilesTheirNamesThoughSomeCannotHaveThem) {
  const test::TemporaryFolder outputs;
  const auto isBad = [](const std::string& path) { return std::stoi(path) % 3 == 0; };
  Paths paths;
  for (int i = 0; i < 200; ++i) paths.push_back(std::to_string(i));
  const auto results = compressAll(
      paths, FileURL::fromPath(outputs.path().string()), ImageFormat::jpeg, 75, {.jobs = 3},
      [&](const std::string& path, const FileURL& to, ImageFormat, double,
          const std::optional<std::string>& name) {
        const std::string destination = to.appending(*name).path();
        auto output = std::make_unique<AtomicFile>(destination);
        output->write(Bytes{1});
        if (isBad(path)) std::filesystem::create_directory(destination);
        return ImageCompressor::Uncommitted{.result = {.path = path, .destination = destination},
                                            .output = std::move(output)};
      });
  EXPECT_EQ(pathsOf(results), paths);
  for (const auto& result : results) {
    EXPECT_EQ(result.error.has_value(), isBad(result.path)) << result.path;
    const std::string name = outputs / (result.path + ".jpg");
    EXPECT_EQ(std::filesystem::is_regular_file(name), !isBad(result.path));
  }
  EXPECT_EQ(outputs.names().size(), 200u);
}

TEST(BatchRunner, tellsEachResultOnceAsItFinishesOnTheCallersThread) {
  Recorder recorder;
  const auto testThread = std::this_thread::get_id();
  std::atomic<std::size_t> countTold = 0;
  std::vector<ImageCompressionResult> told(3);
  const auto tell = [&](std::size_t index, const ImageCompressionResult& result) {
    EXPECT_EQ(std::this_thread::get_id(), testThread);
    EXPECT_EQ(told[index], ImageCompressionResult{});
    told[index] = result;
    ++countTold;
  };
  const auto work = [&](const std::string& path) {
    while (path == "last" && countTold < 2) std::this_thread::yield();
  };
  const auto results = compressAll(Paths{"last", "a", "b"}, folder, ImageFormat::jpeg, 75,
                                   {.jobs = 3, .onResult = tell}, recorder.compressor(work));
  EXPECT_EQ(countTold, 3u);
  EXPECT_EQ(told, results);
}

TEST(BatchRunner, startsNoFileAfterAStop) {
  Recorder recorder;
  bool isStopped = false;
  std::vector<std::size_t> told;
  const BatchOptions options{.jobs = 1,
                             .onResult =
                                 [&](std::size_t index, const auto&) {
                                   told.push_back(index);
                                   isStopped = index == 1;
                                 },
                             .isStopped = [&] { return isStopped; }};
  const auto results = compressAll(Paths{"1", "2", "3", "4"}, folder, ImageFormat::jpeg, 75,
                                   options, recorder.compressor());
  EXPECT_EQ(recorder.started(), (Paths{"1", "2"}));
  EXPECT_EQ(told, (std::vector<std::size_t>{0, 1, 2, 3}));
  EXPECT_EQ(results[1].destination, "/out/2.jpg");
  for (const std::size_t index : {2, 3}) {
    EXPECT_EQ(results[index].path, std::to_string(index + 1));
    EXPECT_EQ(results[index].destination, std::nullopt);
    EXPECT_EQ(results[index].error, std::strerror(ECANCELED));
  }
}

TEST(BatchRunner, endsWithWhatTheCallersFunctionThrows) {
  Recorder recorder;
  const BatchOptions options{
      .jobs = 2, .onResult = [](std::size_t, const auto&) { throw std::domain_error("enough"); }};
  EXPECT_THROW(
      compressAll(Paths(100, "a"), folder, ImageFormat::jpeg, 75, options, recorder.compressor()),
      std::domain_error);
  EXPECT_LE(recorder.started().size(), 3u);
}

TEST(BatchRunner, takesAsManyJobsAsThereAreProcessorsWhenNoneAreGiven) {
  Recorder recorder;
  const auto processors = static_cast<std::size_t>(ProcessInfo::activeProcessorCount());
  compressAll(Paths(processors + 3, "a"), folder, ImageFormat::jpeg, 75, {},
              recorder.compressor([&](const std::string&) { recorder.waitForStarts(processors); }));
  EXPECT_EQ(recorder.mostAtOnce(), processors);
}

TEST(BatchRunner, compressesWithTheImageCompressorByDefault) {
  const auto results = compressAll(
      Paths{"/no/such/file.png"}, folder, ImageFormat::png, 75, {},
      [](const auto&... arguments) { return ImageCompressor::compressUncommitted(arguments...); });
  EXPECT_EQ(results.at(0), ImageCompressor::compress("/no/such/file.png", folder, ImageFormat::png,
                                                     75, "file.png"));
  EXPECT_TRUE(results.at(0).error.has_value());
}

}  // namespace
}  // namespace orvane
