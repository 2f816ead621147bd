#include "codecs/look/PictureSample.h"

#include <gtest/gtest.h>

#include <set>

#include "support/TestImages.h"

namespace orvane {
namespace {

/// Each pixel tells its own place, in units of 16 pixels and within them.
Image places(std::size_t width, std::size_t height) {
  return test::drawImage(
      width, height, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
      [](std::size_t x, std::size_t y) {
        return test::Pixel{static_cast<std::uint16_t>(x / 16), static_cast<std::uint16_t>(y / 16),
                           static_cast<std::uint16_t>(x % 16 * 16 + y % 16), 255};
      });
}

constexpr SampleShape shape{.bandOfSmall = 64, .bandOfLarge = 128, .mostPixels = 600'000};

std::size_t leftOf(const Image& sample, std::size_t x, std::size_t y) {
  const test::Pixel pixel = test::pixelAt(sample, x, y);
  return pixel[0] * std::size_t{16} + pixel[2] / 16;
}

TEST(PictureSample, takesBandsThatBeginAtMultiplesOfSixteen) {
  const auto sample = sampleOf(places(768, 512), shape);
  ASSERT_TRUE(sample);
  EXPECT_TRUE(isOpaqueRendering(*sample));
  EXPECT_EQ(sample->width % 64, 0u);
  EXPECT_EQ(sample->height % 64, 0u);
  std::set<std::size_t> lefts;
  for (std::size_t band = 0; band < sample->width; band += 64) {
    const std::size_t left = leftOf(*sample, band, 0);
    EXPECT_EQ(left % 16, 0u);
    for (std::size_t x = 0; x < 64; ++x) EXPECT_EQ(leftOf(*sample, band + x, 5), left + x);
    lefts.insert(left);
  }
  EXPECT_EQ(lefts.size(), sample->width / 64);
}

TEST(PictureSample, holdsAThirdOfASmallPictureAndLessOfALargeOne) {
  const auto small = sampleOf(places(768, 512), shape);
  const auto large = sampleOf(places(4000, 3000), shape);
  ASSERT_TRUE(small && large);
  EXPECT_NEAR(static_cast<double>(small->width * small->height), 131'000, 15'000);
  EXPECT_NEAR(static_cast<double>(large->width * large->height), 600'000, 40'000);
}

TEST(PictureSample, hasTheBandsOfLargePicturesFromAMegapixelAndAHalfOn) {
  const auto below = sampleOf(places(1499, 1000), shape);
  const auto above = sampleOf(places(1500, 1000), shape);
  ASSERT_TRUE(below && above);
  EXPECT_NE(leftOf(*below, 64, 0), leftOf(*below, 63, 0) + 1);
  EXPECT_EQ(leftOf(*above, 64, 0), leftOf(*above, 63, 0) + 1);
}

TEST(PictureSample, isAbsentForPicturesTooSmallForBands) {
  EXPECT_FALSE(sampleOf(places(63, 4000), shape));
  EXPECT_FALSE(sampleOf(places(200, 63), shape));
  EXPECT_FALSE(sampleOf(places(130, 65), shape));
  EXPECT_FALSE(sampleOf(places(64, 600), shape));
  EXPECT_TRUE(sampleOf(places(64, 768), shape));
}

TEST(PictureSample, staysWithinNarrowPictures) {
  const auto sample = sampleOf(places(64, 4000), shape);
  ASSERT_TRUE(sample);
  EXPECT_EQ(sample->width, 64u);
  EXPECT_GE(sample->height, 1024u);
}

TEST(PictureSample, isOpaqueAndInTheRenderingSpace) {
  const auto sample = sampleOf(test::alphaGradientImage(400, 300), shape);
  ASSERT_TRUE(sample);
  EXPECT_TRUE(isOpaqueRendering(*sample));
  EXPECT_TRUE(sample->colorSpace->isSRGB());
}

}  // namespace
}  // namespace orvane
