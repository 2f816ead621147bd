#include "codecs/look/Look.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <span>
#include <string>

#include "codecs/look/PictureSample.h"
#include "codecs/look/SampleScore.h"
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

/// Fine saturated colours, of which every destination loses more than of most photographs.
Image hardPicture() {
  return test::drawImage(
      640, 448, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
      [](std::size_t x, std::size_t y) {
        const bool isRed = (x / 3 + y / 3) % 2 == 0;
        const auto level = static_cast<std::uint16_t>(x * 7 % 64);
        return isRed ? test::Pixel{220, level, 30, 255} : test::Pixel{30, level, 220, 255};
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
  const Image hard = hardPicture();
  EXPECT_GT(qualityForLook(destination(), hard, measuredAs(ContentClass::photo, hard), 0.6), 0.6);
}

/// With grain: a photograph keeps nothing of an excess.
PictureMeasurements measuredWithGrain(ContentClass contentClass, const Image& image) {
  PictureMeasurements measurements = measuredAs(contentClass, image);
  measurements.characteristics.noiseLevel = 4;
  return measurements;
}

TEST(Look, codesOneSampleOfAPictureThatNeedsMoreQualityAndTwoOfOneThatNeedsLess) {
  static int codedSamples;
  ImageDestination destination = jpegDestination;
  destination.encodeSample = [](const Image& image, const PictureMeasurements& measurements,
                                double quality) {
    ++codedSamples;
    return jpegDestination.encodeSample(image, measurements, quality);
  };
  const auto samplesFor = [&](const Image& image) {
    codedSamples = 0;
    qualityForLook(destination, image, measuredWithGrain(ContentClass::photo, image), 0.75);
    return codedSamples;
  };
  EXPECT_EQ(samplesFor(hardPicture()), 1);
  EXPECT_EQ(samplesFor(photograph(6)), 2);
}

/// A destination for which `image` looks as photographs do on the mean. One at a time.
ImageDestination destinationOfMean(ImageDestination destination, const Image& image) {
  static std::array<QualityPoint, 4> means;
  means = {{{0, 0}, {0.3, 0}, {0.7, 0}, {1, 0}}};
  const Image sample = *sampleOf(image, destination.sampleShape);
  const PictureMeasurements measurements = test::measured(image);
  const SampleScore score(destination, sample, measurements);
  for (QualityPoint& point : means) point.setting = score.at(point.quality);
  destination.sampleScores = [] { return std::span<const QualityPoint>(means); };
  return destination;
}

TEST_P(EveryDestination, takesTheReserveOffAPhotographThatIsLikeTheMean) {
  const Image image = photograph(15);
  const ImageDestination average = destinationOfMean(destination(), image);
  EXPECT_NEAR(qualityForLook(average, image, measuredWithGrain(ContentClass::photo, image), 0.714),
              0.7, 1e-9);
}

TEST_P(EveryDestination, leavesADrawingExactlyAloneThatIsLikeTheMean) {
  const Image image = photograph(15);
  const ImageDestination average = destinationOfMean(destination(), image);
  const PictureMeasurements measurements = measuredAs(ContentClass::illustration, image);
  for (const double quality : {0.01, 0.2, 0.33, 0.5, 0.66, 0.7, 0.77, 0.9, 0.96, 0.99}) {
    EXPECT_EQ(qualityForLook(average, image, measurements, quality), quality);
  }
}

TEST_P(EveryDestination, staysWithinTheQualitiesWhereAllScoresAreEqual) {
  const Image flat = test::drawImage(768, 512, ChannelLayout::rgba, AlphaKind::none, 8,
                                     ColorSpace::sRGB(), [](std::size_t, std::size_t) {
                                       return test::Pixel{90, 90, 90, 255};
                                     });
  for (const ContentClass contentClass : {ContentClass::photo, ContentClass::illustration}) {
    const double quality =
        qualityForLook(destination(), flat, measuredAs(contentClass, flat), 0.75);
    EXPECT_GE(quality, 0);
    EXPECT_LT(quality, 0.75);
  }
}

void expectRisingQualities(const ImageDestination& destination, const Image& image,
                           ContentClass contentClass) {
  const PictureMeasurements measurements = measuredAs(contentClass, image);
  double last = 0;
  for (int percent = 1; percent <= 100; percent += 7) {
    const double moved = qualityForLook(destination, image, measurements, percent / 100.0);
    EXPECT_GE(moved, last) << percent;
    last = moved;
  }
}

TEST_P(EveryDestination, risesWithTheQuality) {
  expectRisingQualities(destination(), photograph(6), ContentClass::photo);
  expectRisingQualities(destination(), hardPicture(), ContentClass::photo);
  expectRisingQualities(destination(), photograph(0), ContentClass::illustration);
}

TEST(Look, risesWithTheQualityWhereScoresFall) {
  ImageDestination destination = jpegDestination;
  destination.encodeSample = [](const Image& image, const PictureMeasurements& measurements,
                                double quality) {
    return jpegDestination.encodeSample(image, measurements, 1 - quality);
  };
  expectRisingQualities(destination, photograph(15), ContentClass::photo);
}

TEST_P(EveryDestination, risesWithTheFinestQualitiesWhereAPictureIsHardToCode) {
  const Image image = hardPicture();
  const PictureMeasurements measurements = measuredAs(ContentClass::photo, image);
  double last = 0;
  for (const double quality : {0.93, 0.95, 0.96, 0.97, 0.98, 0.983, 0.985, 0.99}) {
    const double moved = qualityForLook(destination(), image, measurements, quality);
    EXPECT_GE(moved, last) << quality;
    EXPECT_LE(moved, destination().maximumQuality);
    last = moved;
  }
}

TEST(Look, keepsMoreOfTheExcessWithoutGrainAndOfDrawings) {
  const Image image = photograph(0);
  const auto qualityFor = [&](ContentClass contentClass, double noiseLevel) {
    PictureMeasurements measurements = measuredAs(contentClass, image);
    measurements.characteristics.noiseLevel = noiseLevel;
    return qualityForLook(jpegDestination, image, measurements, 0.75);
  };
  const double photographWithGrain = qualityFor(ContentClass::photo, 4);
  EXPECT_LT(photographWithGrain, qualityFor(ContentClass::photo, 2));
  EXPECT_LT(qualityFor(ContentClass::photo, 2), qualityFor(ContentClass::photo, 0));
  EXPECT_LT(photographWithGrain, qualityFor(ContentClass::illustration, 4));
  EXPECT_LT(qualityFor(ContentClass::illustration, 4), qualityFor(ContentClass::illustration, 0));
}

TEST_P(EveryDestination, leavesPicturesWithAlphaAlone) {
  const Image image = test::alphaGradientImage(768, 512);
  EXPECT_EQ(qualityForLook(destination(), image, measuredAs(ContentClass::photo, image), 0.75),
            0.75);
}

TEST_P(EveryDestination, neverRaisesADrawing) {
  const Image hard = hardPicture();
  EXPECT_EQ(qualityForLook(destination(), hard, measuredAs(ContentClass::illustration, hard), 0.6),
            0.6);
}

TEST_P(EveryDestination, lowersADrawingLessThanAPhotograph) {
  const Image easy = photograph(0);
  const auto qualityFor = [&](ContentClass contentClass) {
    return qualityForLook(destination(), easy, measuredWithGrain(contentClass, easy), 0.75);
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
    for (const double quality : {0.0, 0.001, 0.014, 0.97, 0.995}) {
      const double found =
          qualityForLook(destination(), image, measuredAs(ContentClass::photo, image), quality);
      EXPECT_GE(found, 0);
      EXPECT_LE(found, 1);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Look, EveryDestination,
                         testing::Values(ImageFormat::jpeg, ImageFormat::heic, ImageFormat::avif),
                         [](const auto& tested) {
                           return std::string(tested.param.fileExtension());
                         });

}  // namespace
}  // namespace orvane
