#include "platform/graphics/Flatten.h"

#include <gtest/gtest.h>

#include <new>

#include "support/TestImages.h"
#include "support/TestProfiles.h"

namespace orvane {
namespace {

using test::Pixel;

Image onePixel(AlphaKind alpha, int bitsPerComponent, Pixel pixel) {
  return test::drawImage(1, 1, ChannelLayout::rgba, alpha, bitsPerComponent, ColorSpace::sRGB(),
                         [&](std::size_t, std::size_t) { return pixel; });
}

TEST(Flatten, composesOverWhite) {
  const Image image = test::drawImage(
      3, 1, ChannelLayout::rgba, AlphaKind::straight, 8, ColorSpace::sRGB(),
      [](std::size_t x, std::size_t) -> Pixel {
        return {200, 0, 100, static_cast<std::uint16_t>(x == 0 ? 0 : x == 1 ? 128 : 255)};
      });
  const Image flat = flatten(image, Backdrop::white);
  EXPECT_TRUE(isOpaqueRendering(flat));
  EXPECT_EQ(test::pixelAt(flat, 0, 0), (Pixel{255, 255, 255, 255}));
  EXPECT_EQ(test::pixelAt(flat, 1, 0), (Pixel{227, 127, 177, 255}));
  EXPECT_EQ(test::pixelAt(flat, 2, 0), (Pixel{200, 0, 100, 255}));
}

TEST(Flatten, givesEightBitsOfADeepPicture) {
  const Image image = onePixel(AlphaKind::straight, 16, {0, 65535, 0, 0x8080});
  const Image flat = flatten(image, Backdrop::white);
  EXPECT_EQ(flat.bitsPerComponent, 8);
  EXPECT_EQ(test::pixelAt(flat, 0, 0), (Pixel{127, 255, 127, 255}));
}

TEST(Flatten, takesColoursPastTheirAlphaForWhite) {
  const Image image = onePixel(AlphaKind::premultiplied, 8, {101, 100, 99, 100});
  EXPECT_EQ(test::pixelAt(flatten(image, Backdrop::white), 0, 0), (Pixel{255, 255, 254, 255}));
}

TEST(Flatten, keepsPremultipliedColoursWithoutABackdrop) {
  const Image flat = flatten(test::alphaGradientImage(4, 2), Backdrop::none);
  EXPECT_TRUE(isOpaqueRendering(flat));
  EXPECT_EQ(test::pixelAt(flat, 0, 1), (Pixel{0, 0, 0, 255}));
  EXPECT_EQ(test::pixelAt(flat, 1, 0), (Pixel{0, 30, 67, 255}));
  EXPECT_EQ(test::pixelAt(flat, 3, 1)[2], 200);
}

TEST(Flatten, copiesIntoTheSpaceOfThePictureWhereItCan) {
  const ColorSpacePtr p3 = ColorSpace::fromICC(test::displayP3Profile(), ColorSpace::Model::rgb);
  EXPECT_EQ(flatten(test::patchImage(3, 2, p3), Backdrop::white).colorSpace, p3);
  const Image gray = test::drawImage(1, 1, ChannelLayout::gray, AlphaKind::none, 8,
                                     ColorSpace::standard(ColorSpace::Model::gray),
                                     [](std::size_t, std::size_t) { return Pixel{9}; });
  const Image flat = flatten(gray, Backdrop::none);
  EXPECT_TRUE(flat.colorSpace->isSRGB());
  EXPECT_EQ(test::pixelAt(flat, 0, 0), (Pixel{9, 9, 9, 255}));
}

TEST(Flatten, sharesTheMemoryOfAPictureThatIsFlatAlready) {
  const Image image = test::gradientImage(5, 3);
  EXPECT_EQ(flatten(image, Backdrop::white).pixels, image.pixels);
}

TEST(Flatten, throwsWithoutMemory) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "sanitizers end the process where there is no memory";
#endif
  Image image = onePixel(AlphaKind::straight, 8, {1, 2, 3, 4});
  image.width = image.height = std::size_t{1} << 30;
  EXPECT_THROW(flatten(image, Backdrop::white), std::bad_alloc);
}

}  // namespace
}  // namespace orvane
