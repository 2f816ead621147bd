// Runs whose worker processes die or lack memory.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <thread>

#include "support/RunTool.h"
#include "support/TestFiles.h"
#include "support/TestImages.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

std::vector<pid_t> childrenOf(pid_t parent) {
  std::vector<pid_t> children;
  for (const auto& entry : fs::directory_iterator("/proc")) {
    std::ifstream stat(entry.path() / "stat");
    pid_t process = 0;
    pid_t itsParent = 0;
    std::string name, state;
    if (stat >> process >> name >> state >> itsParent && itsParent == parent && state != "Z") {
      children.push_back(process);
    }
  }
  return children;
}

/// The workers of the run that this process has started.
std::vector<pid_t> workers() {
  std::vector<pid_t> found;
  for (const pid_t tool : childrenOf(getpid())) {
    for (const pid_t factory : childrenOf(tool)) {
      for (const pid_t worker : childrenOf(factory)) found.push_back(worker);
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

TEST_F(WorkersEndToEnd, compressSmallFilesBesideOneThatDoesNotFit) {
  write("a.png", test::noisyImage(48, 40));
  write("large.png", test::noisyImage(1600, 1250));
  write("z.png", test::noisyImage(40, 48));
  for (const ImageFormat format : ImageFormat::allCases) {
    for (const int mebibytes : {200, 300}) {
      tool.launcher = {"prlimit", "--as=" + std::to_string(mebibytes << 20)};
      const auto run = tool.run({"a.png", "large.png", "z.png", "--format",
                                 std::string(format.rawValue()), "--output", "out", "--jobs", "2"});
      const std::string ending(format.fileExtension());
      EXPECT_NE(run.output.find("3 fichier(s) traité(s)"), std::string::npos) << run.output;
      EXPECT_TRUE(fs::exists(tool.folder / ("out/a." + ending))) << mebibytes << run.output;
      EXPECT_TRUE(fs::exists(tool.folder / ("out/z." + ending))) << mebibytes << run.output;
      fs::remove_all(tool.folder / "out");
    }
  }
}

#endif

}  // namespace
}  // namespace orvane
