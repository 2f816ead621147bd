#include "codecs/look/Look.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "support/TestBuffers.h"
#include "support/TestImages.h"
#include "support/TestProfiles.h"

namespace orvane {
namespace {

/// Waves with as much noise as wanted: what is hard to code grows with it.
Image photograph(int noise, const ColorSpacePtr& space = ColorSpace::sRGB()) {
  return test::drawImage(
      768, 512, ChannelLayout::rgba, AlphaKind::none, 8, space, [=](std::size_t x, std::size_t y) {
        std::uint32_t hash =
            static_cast<std::uint32_t>(x * 73856093U) ^ static_cast<std::uint32_t>(y * 19349663U);
        hash = (hash ^ (hash >> 13)) * 0x5BD1E995U;
        const double grain = (static_cast<double>(hash >> 16 & 255U) / 255 - 0.5) * noise;
        const auto sample = [&](double width) {
          const double wave =
              std::sin(static_cast<double>(x) / width) * std::cos(static_cast<double>(y) / 31);
          return static_cast<std::uint16_t>(std::lround(128 + 80 * wave + grain));
        };
        return test::Pixel{sample(23), sample(29), sample(37), 255};
      });
}

PictureMeasurements measuredAs(ContentClass contentClass, const Image& image) {
  PictureMeasurements measurements = test::measured(image);
  measurements.characteristics.contentClass = contentClass;
  return measurements;
}

class EveryDestination : public testing::TestWithParam<ImageFormat> {
 protected:
  const ImageDestination& destination() const { return *ImageDestination::of(GetParam()); }
};

TEST_P(EveryDestination, takesLessQualityWhereAPictureIsEasyToCode) {
  const Image easy = photograph(0);
  const double quality =
      qualityForLook(destination(), easy, measuredAs(ContentClass::photo, easy), 0.75);
  EXPECT_LT(quality, 0.75);
  EXPECT_GT(quality, 0);
}

TEST_P(EveryDestination, takesMoreQualityWhereAPictureIsHardToCode) {
  const Image hard = photograph(20);
  const Image easy = photograph(0);
  EXPECT_GT(qualityForLook(destination(), hard, measuredAs(ContentClass::photo, hard), 0.75),
            qualityForLook(destination(), easy, measuredAs(ContentClass::photo, easy), 0.75));
}

// Whoever asks for more gets no smaller file.
TEST(Look, risesWithEveryStepOfTheQuality) {
  for (const int noise : {0, 6, 25}) {
    const Image image = photograph(noise);
    const PictureMeasurements measurements = measuredAs(ContentClass::photo, image);
    double last = 0;
    for (int percent = 1; percent <= 100; ++percent) {
      const double moved = qualityForLook(jpegDestination, image, measurements, percent / 100.0);
      EXPECT_GE(moved, last) << percent << " with noise of " << noise;
      last = moved;
    }
  }
}

TEST_P(EveryDestination, leavesPicturesWithAlphaAlone) {
  const Image image = test::alphaGradientImage(768, 512);
  EXPECT_EQ(qualityForLook(destination(), image, measuredAs(ContentClass::photo, image), 0.75),
            0.75);
}

TEST_P(EveryDestination, neverRaisesADrawing) {
  for (const int noise : {0, 20, 60}) {
    const Image image = photograph(noise);
    EXPECT_LE(
        qualityForLook(destination(), image, measuredAs(ContentClass::screenContent, image), 0.75),
        0.75);
  }
}

TEST_P(EveryDestination, lowersADrawingLessThanAPhotograph) {
  const Image easy = photograph(0);
  const auto qualityFor = [&](ContentClass contentClass) {
    return qualityForLook(destination(), easy, measuredAs(contentClass, easy), 0.75);
  };
  EXPECT_LT(qualityFor(ContentClass::illustration), 0.75);
  EXPECT_GT(qualityFor(ContentClass::illustration), qualityFor(ContentClass::photo));
}

// HEIC and AVIF files name some spaces by code points, and their readers make other profiles.
TEST_P(EveryDestination, findsTheSameQualityForTheSameNumbersInEverySpace) {
  const Image reference = photograph(20);
  const PictureMeasurements measurements = measuredAs(ContentClass::photo, reference);
  const double quality = qualityForLook(destination(), reference, measurements, 0.9);
  for (const Bytes& profile :
       {test::displayP3Profile(), test::adobeRGBProfile(), test::taggedPQProfile()}) {
    const Image image = photograph(20, ColorSpace::fromICC(profile, ColorSpace::Model::rgb));
    EXPECT_EQ(qualityForLook(destination(), image, measurements, 0.9), quality);
  }
}

TEST_P(EveryDestination, leavesPicturesWithoutASampleAlone) {
  const Image small = test::noisyImage(60, 60);
  EXPECT_EQ(qualityForLook(destination(), small, measuredAs(ContentClass::photo, small), 0.6), 0.6);
}

TEST_P(EveryDestination, movesTheFinestQualitiesLittle) {
  const Image image = photograph(60);
  const PictureMeasurements measurements = measuredAs(ContentClass::photo, image);
  EXPECT_NEAR(qualityForLook(destination(), image, measurements, 0.98), 0.98, 0.02);
  EXPECT_EQ(qualityForLook(destination(), image, measurements, 1), 1);
}

TEST_P(EveryDestination, staysWithinTheQualitiesThatThereAre) {
  for (const int noise : {0, 60}) {
    const Image image = photograph(noise);
    for (const double quality : {0.0, 1.0}) {
      const double found =
          qualityForLook(destination(), image, measuredAs(ContentClass::photo, image), quality);
      EXPECT_GE(found, 0);
      EXPECT_LE(found, 1);
    }
  }
}

/// The nearest of twenty steps.
double stepped(double quality) { return std::round(quality * 20) / 20; }

TEST(Look, countsTheStepThatIsCodedInPlaceOfTheQualityThatIsAsked) {
  ImageDestination destination = jpegDestination;
  destination.codedQuality = stepped;
  destination.encodeSample = [](const Image& image, const PictureMeasurements& measurements,
                                double quality) {
    return jpegDestination.encodeSample(image, measurements, stepped(quality));
  };
  const Image image = photograph(15);
  const PictureMeasurements measurements = measuredAs(ContentClass::photo, image);
  const double lower = qualityForLook(destination, image, measurements, 0.73);
  const double upper = qualityForLook(destination, image, measurements, 0.77);
  EXPECT_NEAR(upper - lower, 0.04, 0.01);
}

INSTANTIATE_TEST_SUITE_P(Look, EveryDestination,
                         testing::Values(ImageFormat::jpeg, ImageFormat::heic, ImageFormat::avif),
                         [](const auto& tested) {
                           return std::string(tested.param.fileExtension());
                         });

}  // namespace
}  // namespace orvane
