#include "workers/WorkerPool.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <thread>

#include "picture/ImageProcessingError.h"
#include "platform/foundation/FileError.h"
#include "support/Processes.h"
#include "support/TemporaryFolder.h"
#include "support/TestFiles.h"
#include "support/TestImages.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

Bytes bytesOf(const CompressedFile& file) { return {file.output.begin(), file.output.end()}; }

/// The workers of the one pool of this process.
std::vector<pid_t> workers() {
  std::vector<pid_t> found;
  for (const pid_t factory : test::childrenOf(getpid())) {
    for (const pid_t worker : test::childrenOf(factory)) found.push_back(worker);
  }
  return found;
}

struct WorkerPoolTest : testing::Test {
  test::TemporaryFolder folder;
  WorkerPool pool;

  std::string write(const std::string& name, ByteView bytes) {
    test::writeFile(folder / name, bytes);
    return folder / name;
  }
  /// The factory has its channel and the standard streams, and can open no more.
  void refuseMoreWorkers() {
    const rlimit limit{4, 4};
    prlimit(test::childrenOf(getpid()).front(), RLIMIT_NOFILE, &limit, nullptr);
  }
  std::string picture() { return write("a.png", test::pngFile(test::noisyImage(60, 40))); }
};

TEST_F(WorkerPoolTest, givesTheBytesOfThisProcess) {
  const std::string path = picture();
  for (const ImageFormat format : ImageFormat::allCases) {
    const CompressedFile file = pool.compress(path, format, 80);
    EXPECT_EQ(bytesOf(file), bytesOf(compressHere(path, format, 80))) << format.rawValue();
    EXPECT_EQ(file.sourceSize, static_cast<std::int64_t>(fs::file_size(path)));
  }
}

TEST(WorkerPool, givesTheSameBytesWhereOneFileHasAllProcessors) {
  const test::TemporaryFolder folder;
  const std::string path = folder / "a.png";
  test::writeFile(path, test::pngFile(test::noisyImage(1300, 800)));
  WorkerPool pool({}, {.jobs = 8, .files = 1, .processors = 8});
  for (const ImageFormat format : ImageFormat::allCases) {
    const CompressedFile file = pool.compress(path, format, 80);
    EXPECT_EQ(bytesOf(file), bytesOf(compressHere(path, format, 80))) << format.rawValue();
  }
}

TEST_F(WorkerPoolTest, usesAHealthyWorkerAgain) {
  const std::string path = picture();
  pool.compress(path, ImageFormat::jpeg, 80);
  const auto first = workers();
  ASSERT_EQ(first.size(), 1u);
  EXPECT_THROW(pool.compress(write("b.png", Bytes(10, 0)), ImageFormat::jpeg, 80),
               ImageProcessingError);
  pool.compress(path, ImageFormat::webp, 80);
  EXPECT_EQ(workers(), first);
}

TEST_F(WorkerPoolTest, reportsTheErrorsOfThisProcess) {
  const auto errorOf = [&](const std::string& path) -> std::string {
    try {
      pool.compress(path, ImageFormat::jpeg, 80);
    } catch (const LocalizedError& error) {
      return error.localizedDescription();
    }
    return "none";
  };
  const auto decodingFailed = ImageProcessingError::decodingFailed().localizedDescription();
  EXPECT_EQ(errorOf(folder / "missing.png"), FileError(ENOENT).localizedDescription());
  EXPECT_EQ(errorOf(folder.path().string()), FileError(EISDIR).localizedDescription());
  EXPECT_EQ(errorOf(write("text.png", Bytes{'t', 'e', 'x', 't'})), decodingFailed);
  EXPECT_EQ(errorOf(write("empty.png", {})), decodingFailed);
  const std::string wide = write("wide.png", test::pngFile(test::gradientImage(16384, 1)));
  try {
    pool.compress(wide, ImageFormat::webp, 80);
    ADD_FAILURE();
  } catch (const ImageProcessingError& error) {
    EXPECT_EQ(error.errorCase(), ImageProcessingError::Case::encodingFailed);
  }
}

TEST_F(WorkerPoolTest, givesUpAFIFOThatNobodyWritesTo) {
  const std::string path = folder / "fifo.png";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_THROW(pool.compress(path, ImageFormat::jpeg, 80), FileError);
}

TEST_F(WorkerPoolTest, readsAPipeToItsEnd) {
  const std::string path = folder / "fifo.png";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const Bytes file = test::pngFile(test::noisyImage(60, 40));
  std::thread writer([&] { test::writeFile(path, file); });
  const CompressedFile compressed = pool.compress(path, ImageFormat::jpeg, 80);
  writer.join();
  EXPECT_EQ(compressed.sourceSize, static_cast<std::int64_t>(file.size()));
  EXPECT_EQ(bytesOf(compressed), bytesOf(compressHere(picture(), ImageFormat::jpeg, 80)));
}

class WorkerDeath : public WorkerPoolTest, public testing::WithParamInterface<int> {};

/// A worker that waits for the rest of a pipe gets the signal.
TEST_P(WorkerDeath, costsOneFile) {
  const std::string path = folder / "fifo.png";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  std::thread killer([&] {
    std::ofstream writer(path);
    std::vector<pid_t> victims;
    while ((victims = workers()).empty()) std::this_thread::yield();
    for (const pid_t victim : victims) kill(victim, GetParam());
  });
  EXPECT_THROW(pool.compress(path, ImageFormat::jpeg, 80), ImageProcessingError);
  killer.join();
  EXPECT_NO_THROW(pool.compress(picture(), ImageFormat::jpeg, 80));
}

INSTANTIATE_TEST_SUITE_P(Signals, WorkerDeath, testing::Values(SIGSEGV, SIGABRT, SIGKILL),
                         [](const auto& parameter) { return std::to_string(parameter.param); });

/// SIGKILL looks like a lack of memory.
TEST_F(WorkerPoolTest, triesAFileOnceMoreWhoseWorkerWasKilled) {
  const std::string path = write("a.png", test::pngFile(test::noisyImage(1500, 1000)));
  std::vector<pid_t> victims;
  std::thread killer([&] {
    while ((victims = workers()).empty()) std::this_thread::yield();
    for (const pid_t victim : victims) kill(victim, SIGKILL);
  });
  const CompressedFile file = pool.compress(path, ImageFormat::webp, 80);
  killer.join();
  EXPECT_EQ(bytesOf(file), bytesOf(compressHere(path, ImageFormat::webp, 80)));
  EXPECT_NE(workers(), victims);
}

TEST(WorkerPool, givesUpAWorkerThatDoesNothing) {
  WorkerPool pool({}, {}, std::chrono::milliseconds(100));
  const test::TemporaryFolder folder;
  const std::string path = folder / "fifo.png";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const Descriptor silent(open(path.c_str(), O_RDWR | O_CLOEXEC));
  EXPECT_THROW(pool.compress(path, ImageFormat::jpeg, 80), ImageProcessingError);
  EXPECT_TRUE(workers().empty());
}

TEST_F(WorkerPoolTest, waitsForAWorkerWhereThereAreNoMoreProcesses) {
  const std::string path = write("a.png", test::pngFile(test::noisyImage(300, 200)));
  pool.compress(path, ImageFormat::webp, 80);
  const auto first = workers();
  refuseMoreWorkers();
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] { EXPECT_NO_THROW(pool.compress(path, ImageFormat::webp, 80)); });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(workers(), first);
}

TEST_F(WorkerPoolTest, worksInThisProcessWhereThereIsNoOther) {
  refuseMoreWorkers();
  const CompressedFile file = pool.compress(picture(), ImageFormat::jpeg, 80);
  EXPECT_EQ(bytesOf(file), bytesOf(compressHere(picture(), ImageFormat::jpeg, 80)));
  EXPECT_TRUE(workers().empty());
}

TEST_F(WorkerPoolTest, startsAnotherWorkerForOneThatDiedIdle) {
  const std::string path = picture();
  pool.compress(path, ImageFormat::jpeg, 80);
  for (const pid_t worker : workers()) kill(worker, SIGKILL);
  EXPECT_NO_THROW(pool.compress(path, ImageFormat::jpeg, 80));
}

TEST(WorkerPool, showsTheFilesOfItsWorkersButNotWhenTheyAreIdle) {
  const std::string ownName = test::nameOf(getpid());
  char program[] = "pool-test";
  std::array<char*, 2> arguments{program, nullptr};
  WorkerPool pool(ProcessTitle(1, arguments.data()));
  const test::TemporaryFolder folder;
  ASSERT_EQ(mkfifo((folder / "a\tb").c_str(), 0600), 0);
  std::thread writer([&] {
    const std::ofstream pipe(folder / "a\tb");
    while (workers().empty() || test::nameOf(workers().front()) != "pool-test a?b") {
      std::this_thread::yield();
    }
  });
  EXPECT_THROW(pool.compress(folder / "a\tb", ImageFormat::jpeg, 80), ImageProcessingError);
  writer.join();
  test::writeFile(folder / "text.png", Bytes{'t', 'e', 'x', 't'});
  EXPECT_THROW(pool.compress(folder / "text.png", ImageFormat::jpeg, 80), ImageProcessingError);
  while (test::nameOf(workers().front()) != "pool-test") std::this_thread::yield();
  prctl(PR_SET_NAME, ownName.c_str());
}

TEST(WorkerPool, takesItsProcessesWithIt) {
  {
    WorkerPool pool;
    test::TemporaryFolder folder;
    test::writeFile(folder / "a.png", test::pngFile(test::noisyImage(60, 40)));
    pool.compress(folder / "a.png", ImageFormat::jpeg, 80);
    EXPECT_EQ(workers().size(), 1u);
  }
  EXPECT_TRUE(test::childrenOf(getpid()).empty());
}

}  // namespace
}  // namespace orvane
