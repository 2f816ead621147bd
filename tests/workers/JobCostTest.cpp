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
    EXPECT_GE(JobCost::memory(*large, format), JobCost::memory(*small, format) + 10'000'000)
        << format.rawValue();
    EXPECT_GT(JobCost::seconds(*large, format), JobCost::seconds(*small, format));
    EXPECT_GE(JobCost::seconds(*small, format), JobCost::smallSeconds);
  }
}

}  // namespace
}  // namespace orvane
