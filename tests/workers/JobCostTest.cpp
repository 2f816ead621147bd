#include "workers/JobCost.h"

#include <gtest/gtest.h>

#include "support/TestFiles.h"
#include "support/TestImages.h"

namespace orvane {
namespace {

TEST(JobCost, growsWithThePicture) {
  const Bytes smallFile = test::pngFile(test::gradientImage(10, 10));
  const Bytes largeFile = test::pngFile(test::gradientImage(1000, 1000));
  const auto small = ImageSource::create(smallFile);
  const auto large = ImageSource::create(largeFile);
  for (const ImageFormat format : ImageFormat::allCases) {
    EXPECT_GE(JobCost::memory(*large, format, 1), JobCost::memory(*small, format, 1) + 10'000'000)
        << format.rawValue();
    EXPECT_GT(JobCost::seconds(*large, format), JobCost::seconds(*small, format));
    EXPECT_GE(JobCost::seconds(*small, format), JobCost::smallSeconds);
  }
}

TEST(JobCost, countsThreads) {
  const Bytes file = test::pngFile(test::gradientImage(10, 10));
  const auto source = ImageSource::create(file);
  const auto memory = [&](int threads) {
    return JobCost::memory(*source, ImageFormat::avif, threads);
  };
  EXPECT_GT(memory(2), memory(1));
  EXPECT_EQ(memory(8) - memory(1), 7 * (memory(2) - memory(1)));
}

}  // namespace
}  // namespace orvane
