// Runs that a signal ends while an output lies in the folder under its temporary name, and what a
// later run does with the file that is left.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>

#include "support/PNGBuilder.h"
#include "support/RunTool.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

/// Opens a FIFO for writing as soon as somebody has opened it for reading. −1 when nobody does.
test::Descriptor openOnceRead(const std::string& fifo) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  test::Descriptor writer;
  while (writer.number() == -1 && std::chrono::steady_clock::now() < end) {
    writer = test::Descriptor(open(fifo.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    if (writer.number() == -1) poll(nullptr, 0, 1);
  }
  return writer;
}

bool isTemporary(const std::string& name) { return name.starts_with(".orvane-"); }

/// A batch in which the output of x/a.png waits under a temporary name until the FIFO a.png, which
/// it will replace, has been read. The name exists before the FIFO is opened, and the FIFO holds
/// the run.
struct HeldBatch {
  test::Tool tool;

  HeldBatch() {
    fs::create_directories(tool.folder / "x");
    test::writeFile(tool.folder / "x/a.png", test::buildPNG({.pixelAt = [](auto, auto) {
                      return test::Pixel{1, 2, 3, 4};
                    }}));
    EXPECT_EQ(mkfifo((tool.folder / "a.png").c_str(), 0600), 0);
  }

  test::RunningTool start() const {
    return tool.start({"x/a.png", "a.png", "--format", "png", "--output", ".", "--jobs", "2"});
  }

  std::ptrdiff_t temporaryCount() const {
    return std::ranges::count_if(tool.folder.names(), isTemporary);
  }
};

struct SignalEndToEnd : HeldBatch, testing::TestWithParam<int> {};

TEST_P(SignalEndToEnd, endsTheRunAndLeavesNoTemporaryFile) {
  test::RunningTool run = start();
  const test::Descriptor fifo = openOnceRead(tool.folder / "a.png");
  const bool isHeld = fifo.number() != -1;
  const auto temporariesWhileHeld = temporaryCount();
  run.send(isHeld ? GetParam() : SIGKILL);
  const test::ToolRun ended = run.wait();
  ASSERT_TRUE(isHeld);
  EXPECT_GT(temporariesWhileHeld, 0);
  EXPECT_EQ(ended.signal, GetParam());
  EXPECT_EQ(ended.output + ended.errors, "");
  EXPECT_EQ(tool.folder.names(), (Names{"a.png", "x"}));
  EXPECT_TRUE(fs::is_fifo(tool.folder / "a.png"));
}

struct LeftoversEndToEnd : HeldBatch, testing::Test {
  /// Returns the names in the folder after the end.
  Names killRun() const {
    test::RunningTool run = start();
    const test::Descriptor fifo = openOnceRead(tool.folder / "a.png");
    EXPECT_NE(fifo.number(), -1);
    run.send(SIGKILL);
    EXPECT_EQ(run.wait().signal, SIGKILL);
    return tool.folder.names();
  }

  test::ToolRun runBeside() const {
    return tool.run({"x/a.png", "--format", "webp", "--output", "."});
  }
};

TEST_F(LeftoversEndToEnd, areRemovedByTheNextRunIntoTheFolder) {
  killRun();
  EXPECT_GT(temporaryCount(), 0);
  EXPECT_EQ(runBeside().status, 0);
  EXPECT_EQ(tool.folder.names(), (Names{"a.png", "a.webp", "x"}));
}

TEST_F(LeftoversEndToEnd, areNotTheFilesOfARunUnderWay) {
  test::RunningTool run = start();
  {
    const test::Descriptor fifo = openOnceRead(tool.folder / "a.png");
    EXPECT_GT(temporaryCount(), 0);
    EXPECT_EQ(runBeside().status, 0);
    EXPECT_GT(temporaryCount(), 0);
  }
  // The FIFO was empty; the output that waited for it has its name.
  EXPECT_EQ(run.wait().status, 1);
  EXPECT_TRUE(fs::is_regular_file(tool.folder / "a.png"));
  EXPECT_EQ(temporaryCount(), 0);
}

TEST_F(LeftoversEndToEnd, areRemovedFromTheStoreBesideTheNextProfile) {
  const Names names = killRun();
  const auto leftover = std::ranges::find_if(names, isTemporary);
  ASSERT_NE(leftover, names.end());
  const fs::path store = tool.profileFile().parent_path();
  fs::create_directories(store);
  test::writeFile(store / *leftover, "");
  tool.run({"--create-profile", "Web", "--format", "png", "--quality", "80"});
  EXPECT_FALSE(fs::exists(store / *leftover));
  EXPECT_TRUE(fs::exists(tool.profileFile()));
}

INSTANTIATE_TEST_SUITE_P(All, SignalEndToEnd, testing::Values(SIGINT, SIGTERM, SIGHUP),
                         [](const auto& signal) {
                           return "Signal" + std::to_string(signal.param);
                         });

}  // namespace
}  // namespace orvane
