#include "platform/graphics/RowRenderer.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/TestImages.h"
#include "support/TestProfiles.h"

namespace orvane {
namespace {

using AlphaForm = RowRenderer::AlphaForm;
using test::Pixel;

Image onePixel(ChannelLayout layout, AlphaKind alpha, int bits, const ColorSpacePtr& space,
               Pixel pixel) {
  return test::drawImage(1, 1, layout, alpha, bits, space,
                         [&](std::size_t, std::size_t) { return pixel; });
}

template <typename Component>
std::vector<Component> rendered(const Image& image, AlphaForm form,
                                const ColorSpacePtr& target = ColorSpace::sRGB()) {
  std::vector<Component> row(image.width * 4);
  RowRenderer(image, target, sizeof(Component) * 8, form).render(0, row.data());
  return row;
}

using Row8 = std::vector<std::uint8_t>;
using Row16 = std::vector<std::uint16_t>;

const ColorSpacePtr gray = ColorSpace::standard(ColorSpace::Model::gray);
const ColorSpacePtr ink = ColorSpace::standard(ColorSpace::Model::cmyk);

TEST(RowRenderer, leavesTheNumbersOfTheSameSpaceUntouched) {
  const ColorSpacePtr p3 = ColorSpace::fromICC(test::displayP3Profile(), ColorSpace::Model::rgb);
  const Image image = onePixel(ChannelLayout::rgba, AlphaKind::none, 8, p3, {250, 3, 128, 255});
  EXPECT_EQ(rendered<std::uint8_t>(image, AlphaForm::premultiplied, p3), (Row8{250, 3, 128, 255}));
  const Image again =
      onePixel(ChannelLayout::rgb, AlphaKind::none, 8,
               ColorSpace::fromICC(test::displayP3Profile(), ColorSpace::Model::rgb), {7, 8, 9});
  EXPECT_EQ(rendered<std::uint8_t>(again, AlphaForm::premultiplied, p3), (Row8{7, 8, 9, 255}));
}

TEST(RowRenderer, showsGreyWithoutAProfileAsTheSameNumberThreeTimes) {
  const Image image = onePixel(ChannelLayout::gray, AlphaKind::none, 8, gray, {77});
  EXPECT_EQ(rendered<std::uint8_t>(image, AlphaForm::premultiplied), (Row8{77, 77, 77, 255}));
}

TEST(RowRenderer, convertsGreyWithAProfile) {
  const ColorSpacePtr gamma22 =
      ColorSpace::fromICC(test::grayGamma22Profile(), ColorSpace::Model::gray);
  const Image image = onePixel(ChannelLayout::gray, AlphaKind::none, 8, gamma22, {10});
  const Row8 row = rendered<std::uint8_t>(image, AlphaForm::premultiplied);
  EXPECT_LT(row[0], 6);  // sRGB is lighter than a plain 2.2 in the darks
  EXPECT_EQ(row[0], row[1]);
  EXPECT_EQ(row[3], 255);
}

TEST(RowRenderer, multipliesUncalibratedInkWithBlack) {
  const Image image = onePixel(ChannelLayout::cmyk, AlphaKind::none, 8, ink, {0, 255, 100, 51});
  // (255 − 0)·204/255, (255 − 255)·204/255, (255 − 100)·204/255
  EXPECT_EQ(rendered<std::uint8_t>(image, AlphaForm::premultiplied), (Row8{204, 0, 124, 255}));
}

TEST(RowRenderer, convertsInkWithAProfileByTheProfile) {
  const ColorSpacePtr press = ColorSpace::fromICC(test::cmykProfile(), ColorSpace::Model::cmyk);
  const Image white = onePixel(ChannelLayout::cmyk, AlphaKind::none, 8, press, {0, 0, 0, 0});
  const Image cyan = onePixel(ChannelLayout::cmyk, AlphaKind::none, 8, press, {255, 0, 0, 0});
  const Row8 paper = rendered<std::uint8_t>(white, AlphaForm::premultiplied);
  const Row8 color = rendered<std::uint8_t>(cyan, AlphaForm::premultiplied);
  EXPECT_GT(paper[0], 200);
  EXPECT_LT(color[0], 60);
  EXPECT_GT(color[2], 150);
}

TEST(RowRenderer, premultipliesRoundingToNearest) {
  const Image image =
      onePixel(ChannelLayout::rgba, AlphaKind::straight, 8, ColorSpace::sRGB(), {255, 100, 1, 127});
  // 127; 49.8; 0.498
  EXPECT_EQ(rendered<std::uint8_t>(image, AlphaForm::premultiplied), (Row8{127, 50, 0, 127}));
  const Image deep = onePixel(ChannelLayout::rgba, AlphaKind::straight, 16, ColorSpace::sRGB(),
                              {65535, 40000, 1, 32768});
  EXPECT_EQ(rendered<std::uint16_t>(deep, AlphaForm::premultiplied),
            (Row16{32768, 20000, 1, 32768}));
}

TEST(RowRenderer, takesPremultipliedPicturesAsTheyAre) {
  const Image image = onePixel(ChannelLayout::rgba, AlphaKind::premultiplied, 8, ColorSpace::sRGB(),
                               {60, 50, 40, 100});
  EXPECT_EQ(rendered<std::uint8_t>(image, AlphaForm::premultiplied), (Row8{60, 50, 40, 100}));
  EXPECT_EQ(rendered<std::uint8_t>(image, AlphaForm::straight), (Row8{153, 128, 102, 100}));
}

TEST(RowRenderer, givesStraightAlphaWhereItIsAskedFor) {
  const Image image = onePixel(ChannelLayout::grayAlpha, AlphaKind::straight, 8, gray, {90, 20});
  EXPECT_EQ(rendered<std::uint8_t>(image, AlphaForm::straight), (Row8{90, 90, 90, 20}));
  EXPECT_EQ(rendered<std::uint8_t>(image, AlphaForm::premultiplied), (Row8{7, 7, 7, 20}));
}

TEST(RowRenderer, showsNothingOfFullyTransparentPremultipliedColours) {
  const Image image =
      onePixel(ChannelLayout::rgba, AlphaKind::premultiplied, 8, ColorSpace::sRGB(), {9, 9, 9, 0});
  EXPECT_EQ(rendered<std::uint8_t>(image, AlphaForm::straight), (Row8{0, 0, 0, 0}));
}

TEST(RowRenderer, convertsTheColoursUnderPremultipliedAlpha) {
  const ColorSpacePtr gamma22 =
      ColorSpace::fromICC(test::grayGamma22Profile(), ColorSpace::Model::gray);
  const Image straight =
      onePixel(ChannelLayout::grayAlpha, AlphaKind::straight, 8, gamma22, {100, 128});
  const Image premultiplied =
      onePixel(ChannelLayout::grayAlpha, AlphaKind::premultiplied, 8, gamma22, {50, 128});
  const Row8 expected = rendered<std::uint8_t>(straight, AlphaForm::premultiplied);
  const Row8 row = rendered<std::uint8_t>(premultiplied, AlphaForm::premultiplied);
  for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(row[i], expected[i], 1);
}

TEST(RowRenderer, changesTheDepth) {
  const Image deep =
      onePixel(ChannelLayout::rgb, AlphaKind::none, 16, ColorSpace::sRGB(), {65535, 32768, 128});
  EXPECT_EQ(rendered<std::uint8_t>(deep, AlphaForm::premultiplied), (Row8{255, 128, 0, 255}));
  const Image shallow =
      onePixel(ChannelLayout::rgb, AlphaKind::none, 8, ColorSpace::sRGB(), {255, 1, 0});
  EXPECT_EQ(rendered<std::uint16_t>(shallow, AlphaForm::premultiplied),
            (Row16{65535, 257, 0, 65535}));
}

TEST(RowRenderer, worksAtTheDeeperDepth) {
  const Image premultiplied =
      onePixel(ChannelLayout::rgba, AlphaKind::premultiplied, 8, ColorSpace::sRGB(), {1, 0, 2, 2});
  EXPECT_EQ(rendered<std::uint16_t>(premultiplied, AlphaForm::straight),
            (Row16{32768, 0, 65535, 514}));
  const ColorSpacePtr p3 = ColorSpace::fromICC(test::displayP3Profile(), ColorSpace::Model::rgb);
  const Image shallow = onePixel(ChannelLayout::rgb, AlphaKind::none, 8, p3, {100, 110, 120});
  const Image deep =
      onePixel(ChannelLayout::rgb, AlphaKind::none, 16, p3, {100 * 257, 110 * 257, 120 * 257});
  EXPECT_EQ(rendered<std::uint16_t>(shallow, AlphaForm::straight),
            rendered<std::uint16_t>(deep, AlphaForm::straight));
}

TEST(RowRenderer, readsRowsByTheirStride) {
  Image image = test::gradientImage(5, 3);
  const Image inner = [&] {
    Image part = image;
    part.width = 2;
    return part;
  }();
  Row8 row(8);
  RowRenderer(inner, ColorSpace::sRGB(), 8, AlphaForm::premultiplied).render(2, row.data());
  const Pixel second = test::pixelAt(image, 1, 2);
  EXPECT_EQ(row[4], second[0]);
  EXPECT_EQ(row[5], second[1]);
}

}  // namespace
}  // namespace orvane
