#include "platform/foundation/ProcessInfo.h"

#include <gtest/gtest.h>

#ifdef __linux__
#include <sched.h>
#endif

namespace orvane {
namespace {

TEST(ProcessInfo, hasAtLeastOneProcessor) { EXPECT_GE(ProcessInfo::activeProcessorCount(), 1); }

#ifdef __linux__
TEST(ProcessInfo, countsTheProcessorsThatTheProcessMayUse) {
  cpu_set_t former;
  ASSERT_EQ(sched_getaffinity(0, sizeof former, &former), 0);
  EXPECT_EQ(ProcessInfo::activeProcessorCount(), CPU_COUNT(&former));
  int processor = 0;
  while (!CPU_ISSET(processor, &former)) ++processor;
  cpu_set_t single;
  CPU_ZERO(&single);
  CPU_SET(processor, &single);
  ASSERT_EQ(sched_setaffinity(0, sizeof single, &single), 0);
  EXPECT_EQ(ProcessInfo::activeProcessorCount(), 1);
  sched_setaffinity(0, sizeof former, &former);
}
#endif

}  // namespace
}  // namespace orvane
