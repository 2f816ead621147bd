#include "pipeline/ImageDecoder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string_view>

#include "picture/ImageProcessingError.h"
#include "support/AVIFBuilder.h"
#include "support/JPEGBuilder.h"
#include "support/JXLBuilder.h"
#include "support/PNGBuilder.h"
#include "support/ShortMemory.h"
#include "support/TestImages.h"
#include "support/TestProfiles.h"
#include "support/WebPBuilder.h"

namespace orvane {
namespace {

using Model = ColorSpace::Model;
using test::Pixel;

const JxlColorEncoding linearJXL =
    test::jxlEncoding(JXL_COLOR_SPACE_RGB, JXL_PRIMARIES_SRGB, JXL_TRANSFER_FUNCTION_LINEAR);

/// Where the pixel (x, y) of the upright picture lies in the stored one, by CIPA DC-008's own
/// words: what the 0th row and the 0th column are.
std::pair<std::size_t, std::size_t> stored(int orientation, std::size_t x, std::size_t y,
                                           std::size_t w, std::size_t h) {
  switch (orientation) {
    case 2:
      return {w - 1 - x, y};  // row 0 top, column 0 right
    case 3:
      return {w - 1 - x, h - 1 - y};  // bottom, right
    case 4:
      return {x, h - 1 - y};  // bottom, left
    case 5:
      return {y, x};  // left, top
    case 6:
      return {y, h - 1 - x};  // right, top
    case 7:
      return {w - 1 - y, h - 1 - x};  // right, bottom
    case 8:
      return {w - 1 - y, x};  // left, bottom
    default:
      return {x, y};
  }
}

/// Compares `upright` with `image` as it is stored, both R, G, B, A.
void expectTurned(const Image& upright, const Image& image, int orientation) {
  const bool swapsSides = orientation >= 5;
  ASSERT_EQ(upright.width, swapsSides ? image.height : image.width);
  ASSERT_EQ(upright.height, swapsSides ? image.width : image.height);
  EXPECT_EQ(upright.bitsPerComponent, image.bitsPerComponent);
  for (std::size_t y = 0; y < upright.height; ++y) {
    for (std::size_t x = 0; x < upright.width; ++x) {
      const auto [sx, sy] = stored(orientation, x, y, image.width, image.height);
      ASSERT_EQ(test::pixelAt(upright, x, y), test::pixelAt(image, sx, sy))
          << "orientation " << orientation << " at " << x << ", " << y;
    }
  }
}

void expectUpright(const Image& image, int orientation) {
  const auto upright = ImageDecoder::applyOrientation(orientation, image);
  ASSERT_TRUE(upright.has_value()) << orientation;
  expectTurned(*upright, image, orientation);
}

TEST(ImageDecoder, turnsEveryOrientationUpright) {
  // More rows than are turned in one block, and no multiple of it.
  for (int orientation = 2; orientation <= 8; ++orientation) {
    expectUpright(test::gradientImage(23, 37), orientation);
    expectUpright(test::gradientImage(1, 1), orientation);
    expectUpright(test::gradientImage(5, 1), orientation);
  }
}

TEST(ImageDecoder, turnsDeepPicturesAtTheirDepth) {
  const Image deep = test::drawImage(7, 19, ChannelLayout::rgba, AlphaKind::none, 16,
                                     ColorSpace::sRGB(), [](std::size_t x, std::size_t y) -> Pixel {
                                       return {static_cast<std::uint16_t>(x * 9000),
                                               static_cast<std::uint16_t>(y * 3001), 12345, 65535};
                                     });
  for (int orientation = 2; orientation <= 8; ++orientation) expectUpright(deep, orientation);
}

TEST(ImageDecoder, leavesAnyOtherOrientationAlone) {
  for (const int orientation : {-1, 0, 1, 9, 1000}) {
    EXPECT_FALSE(ImageDecoder::applyOrientation(orientation, test::gradientImage(3, 2)));
  }
}

TEST(ImageDecoder, turnsOpaquePicturesWithoutAnAlphaChannelAndOthersWithOne) {
  const auto opaque = ImageDecoder::applyOrientation(3, test::gradientImage(4, 4));
  EXPECT_EQ(opaque->alpha, AlphaKind::none);
  const auto translucent = ImageDecoder::applyOrientation(3, test::alphaGradientImage(4, 4));
  EXPECT_EQ(translucent->alpha, AlphaKind::premultiplied);
}

TEST(ImageDecoder, turnsInTheSpaceOfThePictureWhereItCan) {
  const ColorSpacePtr p3 = ColorSpace::fromICC(test::displayP3Profile(), ColorSpace::Model::rgb);
  EXPECT_EQ(ImageDecoder::applyOrientation(6, test::patchImage(6, 4, p3))->colorSpace, p3);
  const Image gray = test::drawImage(
      2, 1, ChannelLayout::gray, AlphaKind::none, 8, ColorSpace::standard(ColorSpace::Model::gray),
      [](std::size_t x, std::size_t) { return Pixel{static_cast<std::uint16_t>(x)}; });
  const auto turned = ImageDecoder::applyOrientation(2, gray);
  EXPECT_TRUE(turned->colorSpace->isSRGB());
  EXPECT_EQ(test::pixelAt(*turned, 0, 0), (Pixel{1, 1, 1, 255}));
}

/// Decodes what `build` makes of each of EXIF's orientations. The first is upright as it is stored.
template <typename Build>
void expectUprightFiles(const Build& build) {
  const Image image = ImageDecoder::decodeImageSource(build(1)).image;
  for (std::uint32_t orientation = 1; orientation <= 8; ++orientation) {
    const auto turned = ImageDecoder::decodeImageSource(build(orientation)).image;
    expectTurned(turned, image, static_cast<int>(orientation));
  }
}

TEST(ImageDecoder, decodesATurnedJPEGUpright) {
  expectUprightFiles([](std::uint32_t orientation) {
    return test::buildJPEG(test::noisyImage(23, 18),
                           {.segments = {test::exifSegment(orientation)}});
  });
}

TEST(ImageDecoder, decodesATurnedPNGUpright) {
  expectUprightFiles([](std::uint32_t orientation) {
    return test::buildPNG(
        {.width = 23,
         .height = 18,
         .pixelAt = [](std::size_t x, std::size_t y) -> Pixel {
           return {static_cast<std::uint16_t>(x * 11), static_cast<std::uint16_t>(y * 14), 99};
         },
         .beforeData = {{"eXIf", test::exifBlock(orientation)}}});
  });
}

TEST(ImageDecoder, decodesATurnedWebPUpright) {
  const Bytes still = test::encodeWebP(test::gradientImage(23, 18), test::WebPCoding::lossless);
  expectUprightFiles([&](std::uint32_t orientation) {
    return test::withMetadata(still, {.exif = test::exifBlock(orientation)});
  });
}

TEST(ImageDecoder, countsTheFramesOfASourceAndDecodesTheFirst) {
  const Image first = test::gradientImage(8, 6);
  const Bytes still = test::encodeWebP(first, test::WebPCoding::lossless);
  const Bytes next =
      test::encodeWebP(test::patchImage(8, 6, ColorSpace::sRGB()), test::WebPCoding::lossless);
  const auto animation =
      ImageDecoder::decodeImageSource(test::animateWebP(8, 6, {{still}, {next}, {next}}));
  EXPECT_EQ(animation.frameCount, 3U);
  expectTurned(animation.image, first, 1);
  EXPECT_EQ(ImageDecoder::decodeImageSource(still).frameCount, 1U);
}

TEST(ImageDecoder, encodesLinearLightWhateverTheFormat) {
  const test::PNGChunk linear{"gAMA", test::pngIntegers({100'000})};
  const auto png = [&](std::uint8_t colorType, std::uint8_t bitDepth) {
    return test::buildPNG({.colorType = colorType,
                           .bitDepth = bitDepth,
                           .pixelAt =
                               [](std::size_t, std::size_t) {
                                 return Pixel{1, 1, 1};
                               },
                           .beforeData = {linear}});
  };
  const Image flat =
      test::drawImage(64, 64, ChannelLayout::rgba, AlphaKind::none, 8,
                      ColorSpace::fromCodePoints({1, 8}, Model::rgb), [](std::size_t, std::size_t) {
                        return Pixel{1, 1, 1, 255};
                      });
  const struct {
    Bytes file;
    int value;
    int tolerance;
  } rows[]{{png(test::rgbType, 16), 13, 0},
           {png(test::rgbType, 8), 3266, 0},
           {png(test::grayType, 8), 3266, 0},
           {test::buildAVIF(flat, {.codePoints = {1, 8}}), 3266, 0},
           {test::buildJXL(flat, {.xybDistance = 0.2F, .encoding = linearJXL}), 3266, 40},
           {test::buildJXL(flat, {.encoding = linearJXL}), 3266, 0}};
  for (const auto& row : rows) {
    const Image image = ImageDecoder::decodeImageSource(row.file).image;
    EXPECT_EQ(image.bitsPerComponent, 16);
    EXPECT_TRUE(image.colorSpace->isSRGB());
    for (std::size_t c = 0; c < 3; ++c) {
      EXPECT_NEAR(test::pixelAt(image, 0, 0)[c], row.value, row.tolerance);
    }
  }
}

TEST(ImageDecoder, encodesLinearLightBeforeItTurnsIt) {
  const Bytes profile = test::linearAdobeRGBProfile();
  const auto still = [&](std::uint32_t orientation) {
    return test::buildPNG(
        {.width = 5,
         .height = 3,
         .colorType = test::rgbaType,
         .pixelAt = [](std::size_t x, std::size_t y) -> Pixel {
           return {static_cast<std::uint16_t>(x * 60), static_cast<std::uint16_t>(y * 120), 2, 255};
         },
         .beforeData = {test::profileChunk(profile), {"eXIf", test::exifBlock(orientation)}}});
  };
  const Image image = ImageDecoder::decodeImageSource(still(1)).image;
  EXPECT_FALSE(image.colorSpace->isLinear());
  const Image turned = ImageDecoder::decodeImageSource(still(6)).image;
  EXPECT_EQ(turned.alpha, AlphaKind::premultiplied);
  expectTurned(turned, image, 6);
}

TEST(ImageDecoderDeathTest, usesThePictureAsStoredWithoutMemoryToTurnIt) {
  if (test::endsWithoutMemory()) GTEST_SKIP() << "there is no memory to be short of";
  // 16 MiB of grey, 64 MiB of R, G, B, A.
  const Bytes file = test::buildPNG({.width = 4100,
                                     .height = 4092,
                                     .colorType = test::grayType,
                                     .pixelAt = [](std::size_t, std::size_t) { return Pixel{9}; },
                                     .beforeData = {{"eXIf", test::exifBlock(6)}}});
  const auto width = [&] { return ImageDecoder::decodeImageSource(file).image.width; };
  const auto exitWithoutMemory = [&] {
    test::leaveMemory(std::size_t{40} << 20);
    _exit(width() == 4100 ? 0 : 1);
  };
  EXPECT_EXIT(exitWithoutMemory(), testing::ExitedWithCode(0), "");
  EXPECT_EQ(width(), 4092U);
}

void expectRefused(ByteView bytes, std::string_view name) {
  try {
    ImageDecoder::decodeImageSource(bytes);
    FAIL() << name;
  } catch (const ImageProcessingError& error) {
    EXPECT_EQ(error.errorCase(), ImageProcessingError::Case::decodingFailed) << name;
  }
}

TEST(ImageDecoder, refusesWhatIsNoPicture) {
  for (const std::string_view content :
       {std::string_view(""), std::string_view("II*\0\x08\0\0\0", 8),
        std::string_view("not a picture at all")}) {
    expectRefused({reinterpret_cast<const std::uint8_t*>(content.data()), content.size()}, content);
  }
}

TEST(ImageDecoder, refusesPicturesOfOtherFormats) {
  const Bytes gif{
      'G',  'I', 'F',  '8', '9', 'a', 1, 0, 1, 0, 0x80, 0, 0,  // 1 × 1, a table of two colours
      0,    0,   0,    255, 255, 255,                          // black and white
      0x2C, 0,   0,    0,   0,   1,   0, 1, 0, 0,              // an image all over the screen
      2,    2,   0x4C, 1,   0,                                 // clear, colour 1, end
      0x3B,
  };
  expectRefused(gif, "GIF");
  const Bytes bmp{
      'B', 'M', 58, 0, 0, 0, 0, 0, 0, 0, 54, 0, 0, 0,         // 58 bytes, pixels at 54
      40,  0,   0,  0, 1, 0, 0, 0, 1, 0, 0,  0, 1, 0, 24, 0,  // 1 × 1, 24 bits, one plane
      0,   0,   0,  0, 4, 0, 0, 0, 0, 0, 0,  0, 0, 0, 0,  0, 0, 0, 0, 0, 0, 0, 0, 0,  // not packed
      30,  20,  10, 0,  // a row, filled up to 4 bytes
  };
  ASSERT_EQ(bmp.size(), 58u);
  expectRefused(bmp, "BMP");
  const Bytes tiff{
      'I', 'I', 42, 0, 8,  0, 0, 0, 8,   0,        // little-endian; 8 entries of a directory at 8
      0,   1,   3,  0, 1,  0, 0, 0, 1,   0, 0, 0,  // ImageWidth 1
      1,   1,   3,  0, 1,  0, 0, 0, 1,   0, 0, 0,  // ImageLength 1
      2,   1,   3,  0, 1,  0, 0, 0, 8,   0, 0, 0,  // BitsPerSample 8
      3,   1,   3,  0, 1,  0, 0, 0, 1,   0, 0, 0,  // Compression: none
      6,   1,   3,  0, 1,  0, 0, 0, 1,   0, 0, 0,  // PhotometricInterpretation: 0 is black
      17,  1,   4,  0, 1,  0, 0, 0, 110, 0, 0, 0,  // StripOffsets 110
      22,  1,   3,  0, 1,  0, 0, 0, 1,   0, 0, 0,  // RowsPerStrip 1
      23,  1,   4,  0, 1,  0, 0, 0, 1,   0, 0, 0,  // StripByteCounts 1
      0,   0,   0,  0, 77,                         // no further directory; the pixel
  };
  ASSERT_EQ(tiff.size(), 111u);
  expectRefused(tiff, "TIFF");
}

}  // namespace
}  // namespace orvane
