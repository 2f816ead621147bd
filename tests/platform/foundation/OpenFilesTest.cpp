#include "platform/foundation/OpenFiles.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

namespace orvane {
namespace {

TEST(OpenFiles, raisesTheLimitToTheSystems) {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  const rlimit less{64, limit.rlim_max};
  setrlimit(RLIMIT_NOFILE, &less);
  EXPECT_EQ(OpenFiles::limit(), 64);
  OpenFiles::raiseLimit();
  rlimit now{};
  getrlimit(RLIMIT_NOFILE, &now);
  EXPECT_EQ(now.rlim_cur, limit.rlim_max);
  setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace
}  // namespace orvane
