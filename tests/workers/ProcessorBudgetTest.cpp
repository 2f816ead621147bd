#include "workers/ProcessorBudget.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
#include <limits>

namespace orvane {
namespace {

using Share = ProcessorBudget::Share;

TEST(ProcessorBudget, givesOneThreadWhileManyFilesWait) {
  ProcessorBudget budget({.jobs = 4, .files = 100, .processors = 4});
  const Share share(budget);
  EXPECT_EQ(share.threads(), 1);
}

TEST(ProcessorBudget, givesASingleFileAllJobs) {
  for (const int jobs : {1, 2, 3, 8}) {
    ProcessorBudget budget({.jobs = jobs, .files = 1, .processors = 8});
    EXPECT_EQ(Share(budget).threads(), jobs);
  }
}

TEST(ProcessorBudget, givesNoMoreThreadsThanThereAreProcessors) {
  for (const std::int64_t jobs : {std::int64_t{100}, std::numeric_limits<std::int64_t>::max()}) {
    ProcessorBudget budget({.jobs = jobs, .files = 1, .processors = 2});
    EXPECT_EQ(Share(budget).threads(), 2);
  }
}

TEST(ProcessorBudget, givesNoMoreThreadsThanPay) {
  ProcessorBudget budget({.jobs = 1000, .files = 1, .processors = 1000});
  EXPECT_EQ(Share(budget).threads(), 16);
}

TEST(ProcessorBudget, widensTheLastFilesWhereTheJobsAreAllProcessors) {
  ProcessorBudget budget({.jobs = 4, .files = 10, .processors = 4});
  for (int unfinished = 10; unfinished > 0; --unfinished) {
    EXPECT_EQ(Share(budget).threads(), unfinished < 8 ? 4 : 1) << unfinished;
  }
}

TEST(ProcessorBudget, neverGivesMoreThreadsThanJobsWhereThereAreMoreProcessors) {
  ProcessorBudget budget({.jobs = 5, .files = 3, .processors = 16});
  const Share first(budget);
  EXPECT_EQ(first.threads(), 3) << "two files wait";
  std::deque<Share> others;
  EXPECT_EQ(others.emplace_back(budget).threads(), 1);
  EXPECT_EQ(others.emplace_back(budget).threads(), 1);
}

TEST(ProcessorBudget, givesTheLastFileWhatOthersHaveGivenBack) {
  ProcessorBudget budget({.jobs = 4, .files = 3, .processors = 16});
  EXPECT_EQ(Share(budget).threads(), 2);
  const Share second(budget);
  EXPECT_EQ(second.threads(), 3);
  EXPECT_EQ(Share(budget).threads(), 1) << "the second has the rest";
}

}  // namespace
}  // namespace orvane
