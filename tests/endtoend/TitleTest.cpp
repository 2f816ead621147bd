// ps and top show how far a run has come.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <thread>

#include "support/Processes.h"
#include "support/RunTool.h"
#include "support/TestFiles.h"
#include "support/TestImages.h"

namespace orvane {
namespace {

using Texts = std::multiset<std::string>;

/// The arguments of a process as ps shows them, without the zeros at the end.
std::string arguments(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/cmdline");
  const std::string bytes = (std::ostringstream() << file.rdbuf()).str();
  return bytes.substr(0, bytes.find_last_not_of('\0') + 1);
}

Texts shown(const std::vector<pid_t>& processes, std::string (*what)(pid_t)) {
  Texts texts;
  for (const pid_t process : processes) texts.insert(what(process));
  return texts;
}

/// Asks until the answer is the expected one, for 20 seconds at most. Returns the last answer.
Texts waitFor(const Texts& expected, const std::function<Texts()>& ask) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  Texts answer = ask();
  while (answer != expected && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    answer = ask();
  }
  return answer;
}

/// A batch that two pipes hold when two of its four files have finished.
struct TitleEndToEnd : testing::Test {
  test::Tool tool;
  std::vector<test::Descriptor> writers;
  std::vector<std::string> sources{"good.png", "bad.png", "held.png", "a\nlong name.heic"};

  TitleEndToEnd() {
    test::writeFile(tool.folder / sources[0], test::pngFile(test::noisyImage(60, 40)));
    for (const std::size_t held : {2, 3}) {
      const std::string path = tool.folder / sources[held];
      EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
      writers.emplace_back(open(path.c_str(), O_RDWR | O_CLOEXEC));
    }
  }

  test::RunningTool start(const std::string& jobs) const {
    std::vector<std::string> arguments = sources;
    arguments.insert(arguments.end(), {"--output", "out", "--jobs", jobs});
    return tool.start(arguments);
  }

  static std::vector<pid_t> firstProcess() { return test::childrenOf(getpid()); }

  static std::vector<pid_t> workers() {
    std::vector<pid_t> found;
    for (const pid_t first : firstProcess()) {
      for (const pid_t factory : test::childrenOf(first)) {
        for (const pid_t worker : test::childrenOf(factory)) found.push_back(worker);
      }
    }
    return found;
  }
};

TEST_F(TitleEndToEnd, ofTheFirstProcessCountsTheFilesThatHaveFinished) {
  test::RunningTool run = start("4");
  const Texts expected{"orvane-cli 2/4"};
  EXPECT_EQ(waitFor(expected, [] { return shown(firstProcess(), arguments); }), expected);
  EXPECT_EQ(shown(firstProcess(), test::nameOf), expected);
  writers.clear();
  EXPECT_TRUE(run.wait().output.ends_with("4 fichier(s) traité(s), 3 échec(s).\n"));
}

TEST_F(TitleEndToEnd, ofAWorkerIsTheNameOfItsFile) {
  test::RunningTool run = start("2");
  const Texts expected{"orvane-cli held.png", "orvane-cli a?long name.heic"};
  EXPECT_EQ(waitFor(expected, [] { return shown(workers(), arguments); }), expected);
  EXPECT_EQ(shown(workers(), test::nameOf), (Texts{"orvane-cli held", "orvane-cli a?lo"}));
  writers.clear();
  run.wait();
}

}  // namespace
}  // namespace orvane
