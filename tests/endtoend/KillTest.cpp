// Runs that are killed at a system call that writes, and what the next run finds.

#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>

#include "support/RunTool.h"
#include "support/TestFiles.h"
#include "support/TestImages.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

/// The parameter is the system call that the run does not survive.
struct KillEndToEnd : testing::TestWithParam<const char*> {
  test::Tool tool;

  void SetUp() override {
    tool.launcher = {"strace", "-qq", "-o", "/dev/null"};
    if (!canTrace()) GTEST_SKIP() << "strace(1) is missing or may not trace";
    tool.launcher.clear();
  }

  /// A run that is killed when it first calls the parameter. It has no workers, whose output is
  /// written as well.
  void runKilled(const std::vector<std::string>& arguments) {
    tool.launcher = {"strace", "-f", "-qq", "-o", "/dev/null"};
    tool.launcher.insert(tool.launcher.end(),
                         {"-e", "inject=socketpair:error=EMFILE", "-e",
                          "inject=" + std::string(GetParam()) + ":signal=SIGKILL:when=1"});
    EXPECT_EQ(tool.run(arguments).signal, SIGKILL);
    tool.launcher.clear();
  }

 private:
  bool canTrace() const try {
    return tool.run({"--help"}).status == 0;
  } catch (const std::system_error&) {
    return false;
  }
};

TEST_P(KillEndToEnd, keepsAnOutputOldOrNew) {
  test::writeFile(tool.folder / "a.png", test::pngFile(test::noisyImage(30, 20)));
  fs::create_directory(tool.folder / "out");
  const fs::path output = tool.folder / "out/a.jpg";
  test::writeFile(output, "old");
  const Bytes old = test::readFile(output);
  const std::vector<std::string> arguments{"a.png", "--format", "jpeg", "--output", "out"};

  runKilled(arguments);
  EXPECT_EQ(test::readFile(output), old);

  EXPECT_EQ(tool.run(arguments).status, 0);
  EXPECT_NE(test::readFile(output), old);
  EXPECT_EQ(std::distance(fs::directory_iterator(tool.folder / "out"), {}), 1);
}

TEST_P(KillEndToEnd, keepsTheProfilesOldOrNew) {
  ASSERT_EQ(tool.run({"--create-profile", "Web", "--format", "png", "--quality", "80"}).status, 0);
  const Bytes old = test::readFile(tool.profileFile());

  const std::vector<std::string> arguments{"--create-profile", "Photos", "--format", "jpeg",
                                           "--quality",        "70"};
  runKilled(arguments);
  EXPECT_EQ(test::readFile(tool.profileFile()), old);

  EXPECT_EQ(tool.run(arguments).status, 0);
  EXPECT_NE(test::readFile(tool.profileFile()), old);
  const fs::path folder = tool.profileFile().parent_path();
  EXPECT_TRUE(
      std::none_of(fs::directory_iterator(folder), {}, [](const fs::directory_entry& entry) {
        return entry.path().filename().string().starts_with(".orvane-");
      }));
}

INSTANTIATE_TEST_SUITE_P(All, KillEndToEnd, testing::Values("write", "fsync", "rename"),
                         [](const auto& call) { return std::string(call.param); });

}  // namespace
}  // namespace orvane
