// Runs whose worker processes die or lack memory.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <thread>

#include "support/Processes.h"
#include "support/RunTool.h"
#include "support/TestFiles.h"
#include "support/TestImages.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

/// The workers of the run that this process has started.
std::vector<pid_t> workers() {
  std::vector<pid_t> found;
  for (const pid_t tool : test::childrenOf(getpid())) {
    for (const pid_t factory : test::childrenOf(tool)) {
      for (const pid_t worker : test::childrenOf(factory)) found.push_back(worker);
    }
  }
  return found;
}

struct WorkersEndToEnd : testing::Test {
  test::Tool tool;

  WorkersEndToEnd() { tool.environment["LC_ALL"] = "C"; }

  std::string write(const std::string& name, const Image& image) const {
    test::writeFile(tool.folder / name, test::pngFile(image));
    return name;
  }
};

TEST_F(WorkersEndToEnd, loseAFileForEachThatDies) {
  std::vector<std::string> arguments;
  for (const char* held : {"x.png", "y.png", "z.png"}) {
    ASSERT_EQ(mkfifo((tool.folder / held).c_str(), 0600), 0);
    arguments.push_back(held);
  }
  for (int i = 0; i < 9; ++i) {
    arguments.push_back(write("good" + std::to_string(i) + ".png", test::noisyImage(60, 40)));
  }
  arguments.insert(arguments.end(), {"--output", "out", "--jobs", "3"});
  test::RunningTool run = tool.start(arguments);
  {
    // Opened for both, so that it does not wait for the reader, and so that the reader waits.
    std::vector<test::Descriptor> writers;
    for (const char* held : {"x.png", "y.png", "z.png"}) {
      writers.emplace_back(open((tool.folder / held).c_str(), O_RDWR | O_CLOEXEC));
    }
    while (workers().size() < 3) std::this_thread::yield();
    const auto victims = workers();
    kill(victims[0], SIGSEGV);
    kill(victims[1], SIGABRT);
    kill(victims[2], SIGKILL);
    while (std::ranges::any_of(
        victims, [](pid_t victim) { return std::ranges::count(workers(), victim) > 0; })) {
      std::this_thread::yield();
    }
  }
  const test::ToolRun ended = run.wait();
  EXPECT_EQ(ended.status, 1);
  EXPECT_TRUE(ended.output.ends_with("12 fichier(s) traité(s), 3 échec(s).\n")) << ended.output;
  EXPECT_EQ(std::distance(fs::directory_iterator(tool.folder / "out"), {}), 9);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // they reserve too much

struct ShortMemoryEndToEnd : WorkersEndToEnd {
  ShortMemoryEndToEnd() {
    write("a.png", test::noisyImage(48, 40));
    write("large.png", test::noisyImage(1600, 1250));
    write("z.png", test::noisyImage(40, 48));
  }

  /// With `mebibytes` of address space for each process; 0 is no limit.
  test::ToolRun compress(const std::string& large, ImageFormat format, const std::string& output,
                         int mebibytes) {
    tool.launcher.clear();
    if (mebibytes > 0) tool.launcher = {"prlimit", "--as=" + std::to_string(mebibytes << 20)};
    return tool.run({"a.png", large, "z.png", "--format", std::string(format.rawValue()),
                     "--output", output, "--jobs", "2"});
  }

  void expectSmallFiles(const test::ToolRun& run, const std::string& output, ImageFormat format) {
    EXPECT_NE(run.output.find("3 fichier(s) traité(s)"), std::string::npos) << run.output;
    for (const char* name : {"a", "z"}) {
      const std::string file = output + "/" + name + "." + std::string(format.fileExtension());
      EXPECT_TRUE(fs::exists(tool.folder / file)) << run.output;
    }
  }
};

TEST_F(ShortMemoryEndToEnd, costsNoSmallFileInAnyOutputFormat) {
  for (const ImageFormat format : ImageFormat::allCases) {
    expectSmallFiles(compress("large.png", format, "out", 200), "out", format);
  }
}

TEST_F(ShortMemoryEndToEnd, costsNoSmallFileBesideAnySourceFormat) {
  for (const ImageFormat source : ImageFormat::allCases) {
    compress("large.png", source, "sources", 0);
    const std::string large = "sources/large." + std::string(source.fileExtension());
    ASSERT_TRUE(fs::exists(tool.folder / large));
    expectSmallFiles(compress(large, ImageFormat::jpeg, "out", 200), "out", ImageFormat::jpeg);
  }
}

TEST_F(ShortMemoryEndToEnd, changesNoBytesWhereItIsEnoughForTheFileAlone) {
  for (const ImageFormat format : {ImageFormat::png, ImageFormat::jpeg, ImageFormat::webp}) {
    const std::string name = "/large." + std::string(format.fileExtension());
    compress("large.png", format, "plenty", 0);
    compress("large.png", format, "short", 300);
    EXPECT_EQ(test::readFile(tool.folder / ("short" + name)),
              test::readFile(tool.folder / ("plenty" + name)));
  }
}

#endif

}  // namespace
}  // namespace orvane
