#include "picture/RGBABuffer.h"

#include <gtest/gtest.h>

#include <cmath>

#include "picture/ImageProcessingError.h"
#include "support/TestImages.h"
#include "support/TestProfiles.h"

namespace orvane {
namespace {

using test::Pixel;

Pixel pixelOf(const RGBABuffer& buffer, std::size_t x, std::size_t y) {
  Pixel pixel;
  for (std::size_t c = 0; c < 4; ++c) pixel[c] = buffer.pixels[(y * buffer.width + x) * 4 + c];
  return pixel;
}

Image uniform(std::size_t width, std::size_t height, ChannelLayout layout, AlphaKind alpha,
              int bits, Pixel pixel) {
  const auto model = layout == ChannelLayout::gray || layout == ChannelLayout::grayAlpha
                         ? ColorSpace::Model::gray
                     : layout == ChannelLayout::cmyk ? ColorSpace::Model::cmyk
                                                     : ColorSpace::Model::rgb;
  return test::drawImage(width, height, layout, alpha, bits, ColorSpace::standard(model),
                         [&](std::size_t, std::size_t) { return pixel; });
}

TEST(RGBABuffer, leavesAnOpaque8BitPictureUnchangedAndSharesItsMemory) {
  const Image image = test::gradientImage(17, 9);
  const RGBABuffer buffer(image);
  EXPECT_FALSE(buffer.hasAlpha);
  EXPECT_EQ(buffer.pixels.data(), image.pixels.get());
  EXPECT_EQ(buffer.pixels.size(), 17u * 9 * 4);
}

TEST(RGBABuffer, leavesTheValuesOfAnOpaqueRGBPictureUnchanged) {
  const RGBABuffer buffer(uniform(3, 2, ChannelLayout::rgb, AlphaKind::none, 8, {1, 2, 3}));
  EXPECT_EQ(pixelOf(buffer, 2, 1), (Pixel{1, 2, 3, 255}));
  EXPECT_FALSE(buffer.hasAlpha);
}

TEST(RGBABuffer, saysThatAPictureOfFullAlphaHasNone) {
  const RGBABuffer buffer(
      uniform(3, 2, ChannelLayout::rgba, AlphaKind::straight, 8, {9, 8, 7, 255}));
  EXPECT_FALSE(buffer.hasAlpha);
  EXPECT_EQ(pixelOf(buffer, 0, 0), (Pixel{9, 8, 7, 255}));
}

TEST(RGBABuffer, makesTransparentPixelsAllZero) {
  const RGBABuffer buffer(
      uniform(2, 2, ChannelLayout::rgba, AlphaKind::straight, 8, {200, 100, 50, 0}));
  EXPECT_TRUE(buffer.hasAlpha);
  EXPECT_EQ(pixelOf(buffer, 1, 1), (Pixel{0, 0, 0, 0}));
}

TEST(RGBABuffer, goesThroughPremultipliedValuesForEveryColourAndAlpha) {
  const Image image = test::drawImage(
      256, 256, ChannelLayout::rgba, AlphaKind::straight, 8, ColorSpace::sRGB(),
      [](std::size_t x, std::size_t y) -> Pixel {
        return {static_cast<std::uint16_t>(x), 0, 255, static_cast<std::uint16_t>(y)};
      });
  const RGBABuffer buffer(image);
  for (int alpha = 0; alpha < 256; ++alpha) {
    for (int color = 0; color < 256; ++color) {
      const auto stored = static_cast<int>(std::lround(color * alpha / 255.0));
      const double factor = alpha == 0 ? 0 : 255.0 / alpha;
      const int expected = std::min(static_cast<int>(std::round(factor * stored)), 255);
      ASSERT_EQ(pixelOf(buffer, static_cast<std::size_t>(color), static_cast<std::size_t>(alpha)),
                (Pixel{static_cast<std::uint16_t>(alpha == 255 ? color : expected), 0,
                       static_cast<std::uint16_t>(alpha == 0 ? 0 : 255),
                       static_cast<std::uint16_t>(alpha)}))
          << color << " at alpha " << alpha;
    }
  }
}

TEST(RGBABuffer, dithersDeepValuesByTheBayerThresholds) {
  constexpr int bayer[8][8] = {{0, 32, 8, 40, 2, 34, 10, 42},  {48, 16, 56, 24, 50, 18, 58, 26},
                               {12, 44, 4, 36, 14, 46, 6, 38}, {60, 28, 52, 20, 62, 30, 54, 22},
                               {3, 35, 11, 43, 1, 33, 9, 41},  {51, 19, 59, 27, 49, 17, 57, 25},
                               {15, 47, 7, 39, 13, 45, 5, 37}, {63, 31, 55, 23, 61, 29, 53, 21}};
  const RGBABuffer buffer(uniform(19, 21, ChannelLayout::gray, AlphaKind::none, 16, {0x1280}));
  for (std::size_t y = 0; y < 21; ++y) {
    for (std::size_t x = 0; x < 19; ++x) {
      const int threshold = bayer[y % 8][x % 8] * 4;
      const auto expected = static_cast<std::uint16_t>(threshold >= 128 ? 0x13 : 0x12);
      ASSERT_EQ(pixelOf(buffer, x, y), (Pixel{expected, expected, expected, 255}));
    }
  }
}

TEST(RGBABuffer, keepsFullDeepValuesFullAtEveryThreshold) {
  const RGBABuffer buffer(
      uniform(8, 8, ChannelLayout::rgb, AlphaKind::none, 16, {65535, 65535, 65535}));
  for (const std::uint8_t value : buffer.pixels) ASSERT_EQ(value, 255);
  EXPECT_FALSE(buffer.hasAlpha);
}

TEST(RGBABuffer, dithersPremultipliedValuesAndAlphaAlike) {
  // Alpha 0x8040: 0x80 where the threshold is below 0xC0, else 0x81; the colour, premultiplied, is
  // the same number and therefore comes out as full.
  const RGBABuffer buffer(
      uniform(8, 8, ChannelLayout::rgba, AlphaKind::straight, 16, {65535, 0, 65535, 0x8040}));
  EXPECT_TRUE(buffer.hasAlpha);
  EXPECT_EQ(pixelOf(buffer, 0, 0), (Pixel{255, 0, 255, 0x80}));  // threshold 0
  EXPECT_EQ(pixelOf(buffer, 2, 1), (Pixel{255, 0, 255, 0x81}));  // threshold 224
}

TEST(RGBABuffer, dithersUpTo40MillionPixelsAndNoFurther) {
  // One row shared by all, so that the picture itself takes no memory.
  const auto tall = [](std::size_t width, std::size_t height) {
    Image image = uniform(width, 1, ChannelLayout::gray, AlphaKind::none, 16, {0x12C0});
    image.height = height;
    image.bytesPerRow = 0;
    return image;
  };
  const RGBABuffer dithered(tall(6400, 6250));
  EXPECT_EQ(pixelOf(dithered, 0, 0)[0], 0x12);  // threshold 0
  EXPECT_EQ(pixelOf(dithered, 1, 0)[0], 0x13);  // threshold 128
  const RGBABuffer plain(tall(6401, 6250));
  EXPECT_EQ(pixelOf(plain, 0, 0)[0], 0x13);  // 0x12C0 / 257 = 18.68, rounded
  EXPECT_EQ(pixelOf(plain, 1, 0)[0], 0x13);
}

TEST(RGBABuffer, convertsGreyAndInkIntoSRGB) {
  const RGBABuffer gray(uniform(2, 2, ChannelLayout::gray, AlphaKind::none, 8, {90}));
  EXPECT_TRUE(gray.colorSpace->isSRGB());
  EXPECT_EQ(pixelOf(gray, 1, 1), (Pixel{90, 90, 90, 255}));
  const RGBABuffer ink(uniform(2, 2, ChannelLayout::cmyk, AlphaKind::none, 8, {255, 0, 0, 0}));
  EXPECT_TRUE(ink.colorSpace->isSRGB());
  EXPECT_EQ(pixelOf(ink, 0, 0), (Pixel{0, 255, 255, 255}));
}

TEST(RGBABuffer, keepsAnRGBSpaceThatCanBeRenderedInto) {
  const ColorSpacePtr p3 = ColorSpace::fromICC(test::displayP3Profile(), ColorSpace::Model::rgb);
  const RGBABuffer buffer(test::patchImage(6, 4, p3));
  EXPECT_EQ(buffer.colorSpace, p3);
  EXPECT_EQ(pixelOf(buffer, 0, 0), (Pixel{220, 30, 40, 255}));
}

TEST(RGBABuffer, isEmptyForAnEmptyPicture) {
  const RGBABuffer buffer(uniform(0, 0, ChannelLayout::rgba, AlphaKind::straight, 8, {}));
  EXPECT_TRUE(buffer.pixels.empty());
  EXPECT_FALSE(buffer.hasAlpha);
}

TEST(RGBABuffer, cannotBeMadeWithoutMemory) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "sanitizers end the process where there is no memory";
#endif
  Image image = uniform(1, 1, ChannelLayout::rgba, AlphaKind::straight, 8, {1, 2, 3, 4});
  image.width = std::size_t{1} << 30;
  image.height = std::size_t{1} << 30;
  try {
    const RGBABuffer buffer(image);
    FAIL() << "a buffer of 2⁶² bytes";
  } catch (const ImageProcessingError& error) {
    EXPECT_EQ(error.errorCase(), ImageProcessingError::Case::contextCreationFailed);
  }
}

TEST(RGBABuffer, readsItsAlphaFlagOffGivenPixels) {
  const auto pixels = makePixelMemory(8);
  std::fill_n(pixels.get(), 8, std::uint8_t{255});
  EXPECT_FALSE(RGBABuffer(2, 1, pixels, ColorSpace::sRGB()).hasAlpha);
  pixels[7] = 254;
  EXPECT_TRUE(RGBABuffer(2, 1, pixels, ColorSpace::sRGB()).hasAlpha);
}

}  // namespace
}  // namespace orvane
