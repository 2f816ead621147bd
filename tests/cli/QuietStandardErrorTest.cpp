#include "cli/QuietStandardError.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>

namespace orvane {
namespace {

TEST(QuietStandardError, swallowsWhatIsWrittenWhileItLives) {
  testing::internal::CaptureStderr();
  {
    const QuietStandardError quiet;
    std::fputs("from a library", stderr);
    EXPECT_EQ(write(STDERR_FILENO, "unbuffered", 10), 10);
  }
  std::fputs("after it", stderr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "after it");
}

}  // namespace
}  // namespace orvane
