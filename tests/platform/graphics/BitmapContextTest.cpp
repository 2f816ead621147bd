#include "platform/graphics/BitmapContext.h"

#include <gtest/gtest.h>

#include "support/TestImages.h"
#include "support/TestProfiles.h"

namespace orvane {
namespace {

using Alpha = BitmapContext::Alpha;
using test::Pixel;

TEST(BitmapContext, cannotBeMadeInASpaceThatCannotBeRenderedInto) {
  EXPECT_FALSE(BitmapContext::create(1, 1, 8, Alpha::noneSkipLast,
                                     ColorSpace::standard(ColorSpace::Model::gray)));
  EXPECT_FALSE(BitmapContext::create(1, 1, 8, Alpha::noneSkipLast,
                                     ColorSpace::standard(ColorSpace::Model::cmyk)));
}

TEST(BitmapContext, cannotBeMadeWithoutMemory) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "sanitizers end the process where there is no memory";
#endif
  const std::size_t side = std::size_t{1} << 29;
  EXPECT_FALSE(BitmapContext::create(side, side, 16, Alpha::noneSkipLast, ColorSpace::sRGB()));
}

Image drawn(const Image& image, Alpha alpha, bool onWhite) {
  auto context = BitmapContext::create(image.width, image.height, image.bitsPerComponent, alpha,
                                       ColorSpace::sRGB());
  if (onWhite) context->fillWhite();
  context->draw(image);
  return std::move(*context).makeImage();
}

TEST(BitmapContext, composesOverWhite) {
  const Image image = test::drawImage(
      3, 1, ChannelLayout::rgba, AlphaKind::straight, 8, ColorSpace::sRGB(),
      [](std::size_t x, std::size_t) -> Pixel {
        return {200, 0, 100, static_cast<std::uint16_t>(x == 0 ? 0 : x == 1 ? 128 : 255)};
      });
  const Image result = drawn(image, Alpha::noneSkipLast, true);
  EXPECT_EQ(result.alpha, AlphaKind::none);
  EXPECT_EQ(test::pixelAt(result, 0, 0), (Pixel{255, 255, 255, 255}));
  EXPECT_EQ(test::pixelAt(result, 1, 0), (Pixel{227, 127, 177, 255}));
  EXPECT_EQ(test::pixelAt(result, 2, 0), (Pixel{200, 0, 100, 255}));
}

TEST(BitmapContext, composesOverWhiteAt16Bits) {
  const Image image = test::drawImage(1, 1, ChannelLayout::rgba, AlphaKind::straight, 16,
                                      ColorSpace::sRGB(), [](std::size_t, std::size_t) {
                                        return Pixel{0, 65535, 0, 0x8000};
                                      });
  EXPECT_EQ(test::pixelAt(drawn(image, Alpha::noneSkipLast, true), 0, 0),
            (Pixel{0x7FFF, 0xFFFF, 0x7FFF, 0xFFFF}));
}

TEST(BitmapContext, takesColoursPastTheirAlphaForWhite) {
  const Image image = test::drawImage(1, 1, ChannelLayout::rgba, AlphaKind::premultiplied, 8,
                                      ColorSpace::sRGB(), [](std::size_t, std::size_t) {
                                        return Pixel{101, 100, 99, 100};
                                      });
  EXPECT_EQ(test::pixelAt(drawn(image, Alpha::noneSkipLast, true), 0, 0),
            (Pixel{255, 255, 254, 255}));
}

TEST(BitmapContext, dropsAlphaWithoutABackground) {
  const Image image = test::alphaGradientImage(4, 2);
  const Image result = drawn(image, Alpha::noneSkipLast, false);
  EXPECT_EQ(test::pixelAt(result, 0, 1), (Pixel{0, 0, 0, 255}));
  EXPECT_EQ(test::pixelAt(result, 3, 1)[2], 200);
  EXPECT_TRUE(isOpaqueRendering(result));
}

TEST(BitmapContext, keepsAlphaPremultiplied) {
  const Image image = test::alphaGradientImage(4, 2);
  const Image result = drawn(image, Alpha::premultipliedLast, false);
  EXPECT_EQ(result.alpha, AlphaKind::premultiplied);
  EXPECT_EQ(test::pixelAt(result, 1, 0), (Pixel{0, 30, 67, 85}));
}

}  // namespace
}  // namespace orvane
