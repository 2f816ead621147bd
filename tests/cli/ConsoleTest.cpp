#include "cli/Console.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

namespace orvane {
namespace {

[[noreturn]] void openAFileWithoutStandardStreams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) close(descriptor);
  Console::openClosedStreams();
  std::exit(open("/dev/null", O_RDONLY));
}

TEST(ConsoleDeathTest, keepsLaterFilesOffTheStandardStreams) {
  EXPECT_EXIT(
      openAFileWithoutStandardStreams(),
      [](int ending) { return WIFEXITED(ending) && WEXITSTATUS(ending) > 2; }, "");
}

[[noreturn]] void printOnStandardError() {
  Console::openClosedStreams();
  Console::printError("café\n");
  std::exit(0);
}

TEST(ConsoleDeathTest, leavesOpenStreamsAlone) {
  EXPECT_EXIT(printOnStandardError(), testing::ExitedWithCode(0), "^café\n$");
}

}  // namespace
}  // namespace orvane
