#include "codecs/look/SampleScore.h"

#include <gtest/gtest.h>

#include "support/TestBuffers.h"
#include "support/TestImages.h"

namespace orvane {
namespace {

TEST(SampleScore, risesWithTheQuality) {
  const Image image = test::noisyImage(192, 128);
  const PictureMeasurements measurements = test::measured(image);
  for (const ImageFormat format : {ImageFormat::jpeg, ImageFormat::heic, ImageFormat::avif}) {
    SCOPED_TRACE(format.rawValue());
    const SampleScore score(*ImageDestination::of(format), image, measurements);
    EXPECT_LT(score.at(0.3), score.at(0.7));
    EXPECT_LT(score.at(0.7), score.at(0.95));
    EXPECT_LT(score.at(0.95), 100);
  }
}

TEST(SampleScore, comparesNumbersWhateverTheirSpace) {
  const Image reference = test::noisyImage(192, 128);
  const PictureMeasurements measurements = test::measured(reference);
  Image image = reference;
  image.colorSpace = ColorSpace::fromCodePoints(displayP3CodePoints, ColorSpace::Model::rgb);
  EXPECT_DOUBLE_EQ(SampleScore(jpegDestination, image, measurements).at(0.7),
                   SampleScore(jpegDestination, reference, measurements).at(0.7));
}

}  // namespace
}  // namespace orvane
