#include "platform/graphics/GammaEncode.h"

#include <gtest/gtest.h>

#include "support/TestImages.h"
#include "support/TestProfiles.h"

namespace orvane {
namespace {

using Model = ColorSpace::Model;
using test::Pixel;

const ColorSpacePtr linearSRGB = ColorSpace::fromCodePoints({1, 8}, Model::rgb);

Image onePixel(ChannelLayout layout, AlphaKind alpha, int bits, const ColorSpacePtr& space,
               const Pixel& pixel) {
  return test::drawImage(1, 1, layout, alpha, bits, space,
                         [&](std::size_t, std::size_t) { return pixel; });
}

TEST(GammaEncode, givesLightSRGBsCurve) {
  const Image image =
      gammaEncode(onePixel(ChannelLayout::rgb, AlphaKind::none, 16, linearSRGB, {0, 65535, 14027}));
  EXPECT_EQ(image.colorSpace, ColorSpace::sRGB());
  EXPECT_EQ(image.alpha, AlphaKind::none);
  EXPECT_EQ(test::pixelAt(image, 0, 0), (Pixel{0, 65535, 32767, 65535}));
  const Image dark =
      gammaEncode(onePixel(ChannelLayout::rgb, AlphaKind::none, 16, linearSRGB, {1, 100, 300}));
  EXPECT_EQ(test::pixelAt(dark, 0, 0), (Pixel{13, 1292, 3724, 65535}));
}

TEST(GammaEncode, givesSixteenBitsOfEight) {
  const Image image =
      gammaEncode(onePixel(ChannelLayout::rgb, AlphaKind::none, 8, linearSRGB, {254, 255, 1}));
  EXPECT_EQ(image.bitsPerComponent, 16);
  EXPECT_EQ(test::pixelAt(image, 0, 0), (Pixel{65422, 65535, 3266, 65535}));
}

TEST(GammaEncode, leavesAlphaAlone) {
  const Image straight = gammaEncode(
      onePixel(ChannelLayout::rgba, AlphaKind::straight, 16, linearSRGB, {14027, 0, 0, 20000}));
  EXPECT_EQ(straight.alpha, AlphaKind::straight);
  EXPECT_EQ(test::pixelAt(straight, 0, 0), (Pixel{32767, 0, 0, 20000}));
  const Image premultiplied = gammaEncode(
      onePixel(ChannelLayout::rgba, AlphaKind::premultiplied, 8, linearSRGB, {1, 0, 2, 2}));
  EXPECT_EQ(premultiplied.alpha, AlphaKind::straight);
  EXPECT_EQ(test::pixelAt(premultiplied, 0, 0), (Pixel{48192, 0, 65535, 514}));
}

TEST(GammaEncode, showsGreyInSRGB) {
  const auto linearGray = ColorSpace::fromICC(test::linearGrayProfile(), Model::gray);
  const Image image = gammaEncode(
      onePixel(ChannelLayout::grayAlpha, AlphaKind::straight, 16, linearGray, {300, 7}));
  EXPECT_EQ(image.colorSpace, ColorSpace::sRGB());
  EXPECT_EQ(test::pixelAt(image, 0, 0), (Pixel{3724, 3724, 3724, 7}));
}

}  // namespace
}  // namespace orvane
