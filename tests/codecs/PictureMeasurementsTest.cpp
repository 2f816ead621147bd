#include "codecs/PictureMeasurements.h"

#include <gtest/gtest.h>

#include "support/TestImages.h"

namespace orvane {
namespace {

using test::Pixel;

PictureMeasurements measured(const Image& image) { return measure(image, {}); }

double shareOf(const Image& image) { return measured(image).chromaEdgeShare; }

/// Vertical lines of one pixel on white, every `distance` pixels.
Image lines(std::size_t width, std::size_t height, std::size_t distance, const Pixel& color) {
  return test::drawImage(width, height, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
                         [&](std::size_t x, std::size_t) {
                           return x % distance == 0 ? color : Pixel{255, 255, 255, 255};
                         });
}

constexpr Pixel red{220, 0, 0, 255};
constexpr Pixel black{0, 0, 0, 255};

TEST(PictureMeasurements, findNoEdgesInPhotographsAndBlackText) {
  EXPECT_EQ(shareOf(test::gradientImage(300, 200)), 0);
  EXPECT_LT(shareOf(test::noisyImage(300, 200)), 0.003);
  EXPECT_EQ(shareOf(lines(200, 100, 4, black)), 0);
}

TEST(PictureMeasurements, countEdgesByTheBlock) {
  EXPECT_EQ(shareOf(lines(200, 100, 2, red)), 1);
  EXPECT_EQ(shareOf(lines(200, 100, 4, red)), 0.5);
  EXPECT_EQ(shareOf(lines(200, 100, 20, red)), 0.1);
}

TEST(PictureMeasurements, seeEdgesInEitherDirection) {
  const Image image =
      test::drawImage(40, 40, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
                      [](std::size_t, std::size_t y) {
                        return y % 2 == 0 ? Pixel{0, 0, 255, 255} : Pixel{255, 255, 255, 255};
                      });
  EXPECT_EQ(shareOf(image), 1);
}

TEST(PictureMeasurements, estimateEdgesOnAGridInLargePictures) {
  // Every power of two between the lines is one that a grid might be in step with.
  for (const std::size_t distance : {4u, 8u, 16u}) {
    const double expected = 2.0 / static_cast<double>(distance);
    EXPECT_NEAR(shareOf(lines(2000, 1400, distance, red)), expected, expected / 10) << distance;
  }
}

/// Grey but for one pixel, which is barely not.
Image grayBut(std::size_t width, std::size_t height, std::size_t column, std::size_t row) {
  return test::drawImage(width, height, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
                         [=](std::size_t x, std::size_t y) {
                           const auto shade = static_cast<std::uint16_t>((x + y) % 256);
                           const bool isOdd = x == column && y == row;
                           return Pixel{shade, shade, std::uint16_t(shade ^ int{isOdd}), 255};
                         });
}

TEST(PictureMeasurements, tellGrayPicturesByEveryPixel) {
  constexpr std::size_t nowhere = 1000;
  EXPECT_TRUE(measured(grayBut(301, 201, nowhere, nowhere)).isGray);
  EXPECT_EQ(shareOf(grayBut(301, 201, nowhere, nowhere)), 0);
  EXPECT_FALSE(measured(grayBut(301, 201, 0, 0)).isGray);
  EXPECT_FALSE(measured(grayBut(301, 201, 300, 200)).isGray);
  EXPECT_FALSE(measured(grayBut(301, 201, 77, 101)).isGray);
  EXPECT_TRUE(measured(grayBut(1, 1, nowhere, nowhere)).isGray);
  EXPECT_FALSE(measured(grayBut(1, 1, 0, 0)).isGray);
}

TEST(PictureMeasurements, seeEdgesBelowGrayRows) {
  const Image image =
      test::drawImage(40, 41, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
                      [](std::size_t x, std::size_t y) {
                        return y >= 20 && x % 2 == 0 ? red : Pixel{255, 255, 255, 255};
                      });
  EXPECT_EQ(measured(image), (PictureMeasurements{.isGray = false, .chromaEdgeShare = 0.5}));
}

TEST(PictureMeasurements, findNoEdgesWhereThereAreNoBlocks) {
  EXPECT_EQ(shareOf(test::gradientImage(1, 1)), 0);
  EXPECT_EQ(shareOf(test::gradientImage(1, 50)), 0);
}

TEST(PictureMeasurements, keepTheCharacteristics) {
  const ImageCharacteristics characteristics{.contentClass = ContentClass::illustration,
                                             .noiseLevel = 2.5};
  EXPECT_EQ(measure(test::noisyImage(9, 9), characteristics).characteristics, characteristics);
}

}  // namespace
}  // namespace orvane
