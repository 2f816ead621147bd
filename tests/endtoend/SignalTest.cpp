// Runs that a signal ends while an output lies in the folder under its temporary name.

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

struct SignalEndToEnd : testing::TestWithParam<int> {
  test::Tool tool;

  SignalEndToEnd() {
    fs::create_directories(tool.folder / "x");
    test::writeFile(tool.folder / "x/a.png", test::buildPNG({.pixelAt = [](auto, auto) {
                      return test::Pixel{1, 2, 3, 4};
                    }}));
    EXPECT_EQ(mkfifo((tool.folder / "a.png").c_str(), 0600), 0);
  }
};

TEST_P(SignalEndToEnd, endsTheRunAndLeavesNoTemporaryFile) {
  // The output of x/a.png waits under a temporary name until the FIFO, which it will replace, has
  // been read. The name exists before the FIFO is opened, and the FIFO holds the run.
  test::RunningTool run =
      tool.start({"x/a.png", "a.png", "--format", "png", "--output", ".", "--jobs", "2"});
  const test::Descriptor fifo = openOnceRead(tool.folder / "a.png");
  const bool isHeld = fifo.number() != -1;
  const Names whileHeld = tool.folder.names();
  run.send(isHeld ? GetParam() : SIGKILL);
  const test::ToolRun ended = run.wait();
  ASSERT_TRUE(isHeld);
  EXPECT_TRUE(std::ranges::any_of(whileHeld, isTemporary));
  EXPECT_EQ(ended.signal, GetParam());
  EXPECT_EQ(ended.output + ended.errors, "");
  EXPECT_EQ(tool.folder.names(), (Names{"a.png", "x"}));
  EXPECT_TRUE(fs::is_fifo(tool.folder / "a.png"));
}

INSTANTIATE_TEST_SUITE_P(All, SignalEndToEnd, testing::Values(SIGINT, SIGTERM, SIGHUP),
                         [](const auto& signal) {
                           return "Signal" + std::to_string(signal.param);
                         });

}  // namespace
}  // namespace orvane
