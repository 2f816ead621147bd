#include "codecs/OpaqueRows.h"

#include <gtest/gtest.h>

#include "support/TestImages.h"
#include "support/TestProfiles.h"

namespace orvane {
namespace {

using test::Pixel;

Pixel pixelOf(const std::uint8_t* row, std::size_t x) {
  return {row[x * 4], row[x * 4 + 1], row[x * 4 + 2], row[x * 4 + 3]};
}

TEST(OpaqueRows, areThePicturesOwnWhereItHoldsThem) {
  const Image image = test::gradientImage(7, 20);
  OpaqueRows rows(image);
  const auto some = rows.read(3, 2);
  ASSERT_EQ(some.size(), 2u);
  EXPECT_EQ(some[0], image.row(3));
  EXPECT_EQ(some[1], image.row(4));
}

TEST(OpaqueRows, endWithThePicture) {
  const Image image = test::gradientImage(7, 20);
  OpaqueRows rows(image);
  EXPECT_EQ(rows.read(0).size(), OpaqueRows::maximumCount);
  EXPECT_EQ(rows.read(16).size(), 4u);
}

TEST(OpaqueRows, areRenderedIntoSRGBFromOtherModels) {
  const Image gray = test::drawImage(
      3, 18, ChannelLayout::gray, AlphaKind::none, 16,
      ColorSpace::standard(ColorSpace::Model::gray),
      [](std::size_t, std::size_t y) { return Pixel{static_cast<std::uint16_t>(y * 257)}; });
  OpaqueRows rows(gray);
  EXPECT_TRUE(rows.colorSpace()->isSRGB());
  const auto last = rows.read(16);
  EXPECT_EQ(pixelOf(last[0], 2), (Pixel{16, 16, 16, 255}));
  EXPECT_EQ(pixelOf(last[1], 0), (Pixel{17, 17, 17, 255}));
}

TEST(OpaqueRows, keepTheNumbersOfAnRGBProfile) {
  const auto p3 = ColorSpace::fromICC(test::displayP3Profile(), ColorSpace::Model::rgb);
  const Image image = test::drawImage(2, 2, ChannelLayout::rgb, AlphaKind::none, 8, p3,
                                      [](std::size_t, std::size_t) {
                                        return Pixel{10, 200, 30};
                                      });
  OpaqueRows rows(image);
  EXPECT_EQ(rows.colorSpace(), p3);
  EXPECT_EQ(pixelOf(rows.read(1)[0], 1), (Pixel{10, 200, 30, 255}));
}

TEST(OpaqueRows, showTransparencyOnBlack) {
  const Image image = test::drawImage(1, 1, ChannelLayout::rgba, AlphaKind::straight, 8,
                                      ColorSpace::sRGB(), [](std::size_t, std::size_t) {
                                        return Pixel{200, 100, 0, 128};
                                      });
  OpaqueRows rows(image);
  const Pixel pixel = pixelOf(rows.read(0)[0], 0);
  EXPECT_EQ(pixel[0], 100);
  EXPECT_EQ(pixel[1], 50);
}

}  // namespace
}  // namespace orvane
