#include "codecs/jpeg/VisualMask.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/TestImages.h"

namespace orvane {
namespace {

using test::Pixel;

VisualMask maskOf(const Image& image) {
  OpaqueRows rows(image);
  return VisualMask(rows);
}

constexpr Pixel gray{100, 100, 100, 255};

/// Flat, but for checks of two pixels on the right of column `edge`.
Image checksBeyond(std::size_t width, std::size_t height, std::size_t edge) {
  return test::drawImage(width, height, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
                         [=](std::size_t x, std::size_t y) {
                           if (x < edge || (x / 2 + y / 2) % 2 == 0) return gray;
                           return Pixel{200, 200, 200, 255};
                         });
}

Image flat(std::size_t width, std::size_t height) { return checksBeyond(width, height, width); }

TEST(VisualMask, findsErrorsMostVisibleWhereThePictureIsFlat) {
  const VisualMask mask = maskOf(flat(50, 37));
  const double most = 243 / 56.7;
  for (const std::size_t x : {0u, 3u, 6u}) {
    EXPECT_NEAR(mask.at(x, 4, 1).fine, std::pow(most, 7.0 / 16), 1e-3);
    EXPECT_NEAR(mask.at(x, 4, 1).coarse, std::pow(most, 7.0 / 8), 1e-3);
  }
}

TEST(VisualMask, findsErrorsHiddenByDetail) {
  const VisualMask mask = maskOf(checksBeyond(64, 64, 0));
  const double variance = 50 * 50;
  EXPECT_NEAR(mask.at(4, 4, 1).fine, std::pow(243 / (2 * variance + 56.7), 7.0 / 16), 0.01);
}

TEST(VisualMask, hidesCoarseErrorsBehindCoarseDetailOnly) {
  const VisualMask mask = maskOf(checksBeyond(64, 64, 0));
  EXPECT_FLOAT_EQ(mask.at(4, 4, 1).coarse, maskOf(flat(64, 64)).at(4, 4, 1).coarse);
}

TEST(VisualMask, looksBeyondTheBlock) {
  const VisualMask mask = maskOf(checksBeyond(128, 64, 64));
  EXPECT_LT(mask.at(7, 3, 1).fine, mask.at(5, 3, 1).fine);
  EXPECT_GT(mask.at(7, 3, 1).fine, mask.at(8, 3, 1).fine);
  EXPECT_FLOAT_EQ(mask.at(0, 3, 1).fine, mask.at(5, 3, 1).fine);
}

TEST(VisualMask, takesMeansOfTheBlocksWithinThePicture) {
  const VisualMask mask = maskOf(checksBeyond(72, 40, 8));
  const double own = std::pow(mask.at(8, 4, 1).fine, 16.0 / 7);
  EXPECT_NEAR(std::pow(mask.at(8, 4, 2).fine, 16.0 / 7), own, own / 1000);
  double sum = 0;
  for (const std::size_t x : {0u, 1u}) {
    for (const std::size_t y : {2u, 3u}) sum += std::pow(mask.at(x, y, 1).fine, 16.0 / 7);
  }
  EXPECT_NEAR(std::pow(mask.at(0, 2, 2).fine, 16.0 / 7), sum / 4, sum / 1000);
}

TEST(VisualMask, takesPicturesOfAnySize) {
  for (const std::size_t side : {1u, 2u, 3u, 7u, 9u}) {
    EXPECT_NEAR(maskOf(flat(side, 1)).at(0, 0, 2).coarse, 3.57, 0.01);
    EXPECT_NEAR(maskOf(flat(1, side)).at(0, 0, 1).coarse, 3.57, 0.01);
  }
}

}  // namespace
}  // namespace orvane
