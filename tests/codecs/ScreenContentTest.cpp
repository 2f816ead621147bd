#include "codecs/ScreenContent.h"

#include <gtest/gtest.h>

#include "support/TestImages.h"

namespace orvane {
namespace {

using test::Pixel;

bool isScreenContent(const Image& image) {
  OpaqueRows rows(image);
  return suitsScreenContentTools(rows);
}

Image draw(std::size_t width, std::size_t height,
           const std::function<Pixel(std::size_t, std::size_t)>& pixelAt) {
  return test::drawImage(width, height, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
                         pixelAt);
}

/// Strokes of black, one column of twelve, in every second block of sixteen rows.
Pixel text(std::size_t x, std::size_t y) {
  return x % 12 == 5 && y / 16 % 2 == 0 ? Pixel{20, 20, 20, 255} : Pixel{255, 255, 255, 255};
}

/// Wide steps, each a little lighter than the one before.
Pixel softSteps(std::size_t x, std::size_t) {
  const auto shade = static_cast<std::uint16_t>(x / 10 * 5 % 256);
  return {shade, shade, 255, 255};
}

TEST(ScreenContent, isTextOnAPlainGround) {
  EXPECT_TRUE(isScreenContent(draw(300, 200, text)));
  EXPECT_TRUE(isScreenContent(draw(3000, 1001, text)));
}

TEST(ScreenContent, isSeenInOneChannel) {
  EXPECT_TRUE(isScreenContent(draw(300, 200, [](std::size_t x, std::size_t) {
    return Pixel{90, 90, static_cast<std::uint16_t>(x % 20 == 0 ? 200 : 90), 255};
  })));
}

TEST(ScreenContent, isNotPhotographed) {
  EXPECT_FALSE(isScreenContent(test::noisyImage(300, 200)));
  EXPECT_FALSE(isScreenContent(test::gradientImage(300, 200)));
}

TEST(ScreenContent, isNotSoftlyDrawn) {
  EXPECT_FALSE(isScreenContent(draw(300, 200, softSteps)));
  EXPECT_TRUE(isScreenContent(draw(300, 200, [](std::size_t x, std::size_t y) {
    return y % 4 == 0 ? text(x, 0) : softSteps(x, y);  // with lines of text on it
  })));
}

TEST(ScreenContent, isNotFlatFromSideToSide) {
  EXPECT_FALSE(isScreenContent(draw(300, 200, [](auto, auto) { return Pixel{9, 9, 9, 255}; })));
  EXPECT_FALSE(isScreenContent(draw(300, 200, [](std::size_t, std::size_t y) {
    return Pixel{static_cast<std::uint16_t>(y), 60, 200, 255};  // a sky
  })));
}

TEST(ScreenContent, isNothingInOneColumn) {
  EXPECT_FALSE(isScreenContent(draw(1, 50, text)));
  EXPECT_FALSE(isScreenContent(draw(0, 0, text)));
  EXPECT_FALSE(isScreenContent(draw(50, 0, text)));
}

}  // namespace
}  // namespace orvane
