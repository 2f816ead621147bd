#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <stdexcept>

#include "codecs/ImageDestination.h"
#include "codecs/ImageSource.h"
#include "codecs/avif/AVIFLibrary.h"
#include "support/TestBuffers.h"
#include "support/TestImages.h"
#include "support/TestProfiles.h"

namespace orvane {
namespace {

using test::Pixel;

Bytes encode(const Image& image, double quality = 0.75, int threads = 1) {
  return ImageDestination::of(ImageFormat::avif)
      ->encode(image, test::measured(image), quality, threads);
}

Image decode(ByteView file) { return avifReader.open(file)->image(); }

/// A file's header as plain libavif reads it.
AVIFLibrary::Decoder headerOf(const Bytes& file) {
  auto decoder = AVIFLibrary::makeDecoder();
  if (avifDecoderSetIOMemory(decoder.get(), file.data(), file.size()) != AVIF_RESULT_OK ||
      avifDecoderParse(decoder.get()) != AVIF_RESULT_OK) {
    throw std::runtime_error(decoder->diag.error);
  }
  return decoder;
}

/// One pixel of a decoded picture in 8 bits.
std::array<double, 4> in8Bits(const Image& image, std::size_t x, std::size_t y) {
  const Pixel pixel = test::pixelAt(image, x, y);
  const double scale = image.bitsPerComponent == 8 ? 1 : 257;
  return {pixel[0] / scale, pixel[1] / scale, pixel[2] / scale, pixel[3] / scale};
}

void expectNear(const Image& decoded, const Image& original, double tolerance) {
  ASSERT_EQ(decoded.width, original.width);
  ASSERT_EQ(decoded.height, original.height);
  for (std::size_t y = 0; y < original.height; ++y) {
    for (std::size_t x = 0; x < original.width; ++x) {
      const auto got = in8Bits(decoded, x, y), want = in8Bits(original, x, y);
      for (std::size_t c = 0; c < 4; ++c) {
        ASSERT_NEAR(got[c], want[c], tolerance) << x << "," << y << " channel " << c;
      }
    }
  }
}

Image flatImage(std::size_t width, std::size_t height, Pixel color, AlphaKind alpha,
                const ColorSpacePtr& space = ColorSpace::sRGB()) {
  return test::drawImage(width, height, ChannelLayout::rgba, alpha, 8, space,
                         [&](std::size_t, std::size_t) { return color; });
}

/// An opaque 8-bit picture in 16 bits, as it is decoded.
Image widened(const Image& image) {
  return test::drawImage(image.width, image.height, image.layout, image.alpha, 16, image.colorSpace,
                         [&](std::size_t x, std::size_t y) {
                           Pixel pixel = test::pixelAt(image, x, y);
                           for (auto& channel : pixel) {
                             channel = static_cast<std::uint16_t>(channel * 257);
                           }
                           return pixel;
                         });
}

TEST(AVIFWriter, keepsFlatColoursInEverySpace) {
  for (const ColorSpacePtr& space :
       {ColorSpace::sRGB(),
        ColorSpace::fromCodePoints(displayP3CodePoints, ColorSpace::Model::rgb)}) {
    const Image patches = test::patchImage(96, 64, space);
    for (const Image& source : {patches, widened(patches)}) {  // in 8 bits and in 10
      const Image image = decode(encode(source, 0.95));
      EXPECT_EQ(image.colorSpace->codePoints(), space->codePoints());
      for (const std::size_t x : {16u, 48u, 80u}) {
        for (const std::size_t y : {16u, 48u}) {
          const auto got = in8Bits(image, x, y), want = in8Bits(patches, x, y);
          for (std::size_t c = 0; c < 4; ++c) EXPECT_NEAR(got[c], want[c], 2) << x << "," << y;
        }
      }
    }
  }
}

TEST(AVIFWriter, holdsEverySize) {
  const Pixel color{200, 120, 60, 255};
  for (const auto& [width, height] :
       {std::pair{1, 1}, {1, 9}, {33, 1}, {7, 5}, {31, 33}, {64, 32}, {65, 97}}) {
    const Image flat = flatImage(static_cast<std::size_t>(width), static_cast<std::size_t>(height),
                                 color, AlphaKind::none);
    expectNear(decode(encode(flat)), flat, 3);
  }
}

TEST(AVIFWriter, keepsRowsInTheirPlaces) {
  const Image gradient = test::gradientImage(50, 90);  // more than one strip
  EXPECT_LT(test::meanDifference(decode(encode(gradient, 0.95)), widened(gradient)), 257);
}

TEST(AVIFWriter, writesNoAlphaForPicturesWithout) {
  EXPECT_FALSE(headerOf(encode(test::gradientImage(16, 16)))->alphaPresent);
  EXPECT_TRUE(headerOf(encode(test::alphaGradientImage(16, 16)))->alphaPresent);
}

TEST(AVIFWriter, keepsAlphaNearlyWithoutLossWhateverTheQuality) {
  const Image picture = test::alphaGradientImage(64, 48);
  const Image image = decode(encode(picture, 0.1));
  EXPECT_EQ(image.alpha, AlphaKind::straight);
  for (std::size_t y = 0; y < picture.height; ++y) {
    for (std::size_t x = 0; x < picture.width; ++x) {
      ASSERT_NEAR(in8Bits(image, x, y)[3], in8Bits(picture, x, y)[3], 3) << x << "," << y;
    }
  }
}

TEST(AVIFWriter, keepsFlatAlphaExactly) {
  const Image picture =
      test::drawImage(64, 64, ChannelLayout::rgba, AlphaKind::straight, 8, ColorSpace::sRGB(),
                      [](std::size_t x, std::size_t) -> Pixel {
                        return {90, 140, 40, static_cast<std::uint16_t>(x < 32 ? 0 : 255)};
                      });
  for (const Image& source : {picture, widened(picture)}) {  // in 8 bits and in 10
    const Image image = decode(encode(source));
    EXPECT_EQ(in8Bits(image, 8, 32)[3], 0);
    EXPECT_EQ(in8Bits(image, 56, 32)[3], 255);
  }
}

TEST(AVIFWriter, storesPremultipliedColoursStraight) {
  const Image picture = flatImage(32, 32, {100, 50, 0, 128}, AlphaKind::premultiplied);
  const Image image = decode(encode(picture, 0.95));
  EXPECT_EQ(image.alpha, AlphaKind::straight);
  const auto pixel = in8Bits(image, 16, 16);
  EXPECT_NEAR(pixel[0], 199, 3);
  EXPECT_NEAR(pixel[1], 100, 3);
  EXPECT_NEAR(pixel[3], 128, 1);
}

TEST(AVIFWriter, codesScreensIn8BitsAndAllElseIn10) {
  const Image screen = test::patchImage(96, 64, ColorSpace::sRGB());
  EXPECT_EQ(decode(encode(screen)).bitsPerComponent, 8);
  EXPECT_EQ(decode(encode(widened(screen))).bitsPerComponent, 16);
  EXPECT_EQ(decode(encode(test::noisyImage(96, 64))).bitsPerComponent, 16);
  EXPECT_EQ(decode(encode(test::gradientImage(96, 64))).bitsPerComponent, 16);
}

TEST(AVIFWriter, keepsMoreThan8Bits) {
  const Image ramp = test::drawImage(256, 16, ChannelLayout::rgba, AlphaKind::straight, 16,
                                     ColorSpace::sRGB(), [](std::size_t x, std::size_t) -> Pixel {
                                       const auto shade = static_cast<std::uint16_t>(20000 + x * 8);
                                       return {shade, shade, shade, 65535};
                                     });
  const Image image = decode(encode(ramp, 0.95));
  EXPECT_LT(test::meanDifference(image, ramp), 128);
}

TEST(AVIFWriter, rendersGrayIntoSRGB) {
  const Image gray = test::drawImage(20, 10, ChannelLayout::gray, AlphaKind::none, 8,
                                     ColorSpace::standard(ColorSpace::Model::gray),
                                     [](std::size_t, std::size_t) -> Pixel { return {77}; });
  const Image image = decode(encode(gray, 0.95));
  EXPECT_TRUE(image.colorSpace->isSRGB());
  for (const std::size_t c : {0u, 1u, 2u}) EXPECT_NEAR(in8Bits(image, 5, 5)[c], 77, 2);
}

TEST(AVIFWriter, saysByCodePointsWhatThoseCanSay) {
  const auto patches = [](const ColorSpacePtr& space) {
    return encode(test::patchImage(16, 16, space));
  };
  const Bytes plain = patches(ColorSpace::sRGB());
  const auto sRGB = headerOf(plain);
  EXPECT_EQ(sRGB->image->colorPrimaries, 1);
  EXPECT_EQ(sRGB->image->transferCharacteristics, 13);
  EXPECT_EQ(sRGB->image->matrixCoefficients, 6);
  EXPECT_EQ(sRGB->image->yuvRange, AVIF_RANGE_FULL);
  EXPECT_EQ(sRGB->image->icc.size, 0u);

  const Bytes wide = patches(ColorSpace::fromICC(test::displayP3Profile(), ColorSpace::Model::rgb));
  const auto displayP3 = headerOf(wide);
  EXPECT_EQ(displayP3->image->colorPrimaries, 12);
  EXPECT_EQ(displayP3->image->transferCharacteristics, 13);
  EXPECT_EQ(displayP3->image->icc.size, 0u);
}

TEST(AVIFWriter, embedsTheProfileOfOtherSpaces) {
  const Bytes profile = test::adobeRGBProfile();
  const Bytes file =
      encode(test::patchImage(16, 16, ColorSpace::fromICC(profile, ColorSpace::Model::rgb)));
  const auto header = headerOf(file);
  EXPECT_TRUE(
      std::ranges::equal(ByteView(header->image->icc.data, header->image->icc.size), profile));
  EXPECT_EQ(header->image->colorPrimaries, 2);
  EXPECT_EQ(header->image->transferCharacteristics, 2);
  EXPECT_EQ(header->image->matrixCoefficients, 6);
}

TEST(AVIFWriter, writesNoMetadataAndNoTransformation) {
  const Bytes file = encode(test::gradientImage(16, 16));
  const auto header = headerOf(file);
  EXPECT_EQ(header->image->exif.size, 0u);
  EXPECT_EQ(header->image->xmp.size, 0u);
  EXPECT_EQ(header->image->transformFlags, avifTransformFlags{AVIF_TRANSFORM_NONE});
}

TEST(AVIFWriter, makesTheSameBytesEachTime) {
  const Image picture = test::noisyImage(70, 50);
  EXPECT_EQ(encode(picture), encode(picture));
}

TEST(AVIFWriter, makesTheSameBytesOnAnyNumberOfThreads) {
  for (const Image& picture :
       {test::gradientImage(2500, 1700), test::alphaGradientImage(1700, 2500)}) {
    const Bytes file = encode(picture);
    for (const int threads : {2, 3, 8}) EXPECT_EQ(encode(picture, 0.75, threads), file) << threads;
  }
}

TEST(AVIFWriter, makesLargerAndTruerFilesAtHigherQuality) {
  const Image picture = test::noisyImage(96, 96);
  std::size_t previousSize = 0;
  double previousDifference = 1e9;
  for (const double quality : {0.0, 0.3, 0.75, 0.99}) {
    const Bytes file = encode(picture, quality);
    const double difference = test::meanDifference(decode(file), widened(picture));
    EXPECT_GT(file.size(), previousSize) << quality;
    EXPECT_LT(difference, previousDifference) << quality;
    previousSize = file.size();
    previousDifference = difference;
  }
}

TEST(AVIFWriter, holdsTheLongestSidesOfAV1) {
  for (const auto& [width, height] : {std::pair<std::size_t, std::size_t>{65536, 3}, {5, 65536}}) {
    const Image flat = flatImage(width, height, {200, 120, 60, 255}, AlphaKind::none);
    expectNear(decode(encode(flat)), flat, 3);
  }
}

TEST(AVIFWriter, refusesSidesThatAV1CannotHold) {
  for (const auto& [width, height] : {std::pair<std::size_t, std::size_t>{65537, 1}, {1, 65537}}) {
    EXPECT_THROW(encode(flatImage(width, height, {1, 2, 3, 255}, AlphaKind::none)),
                 UnwritableImage);
  }
}

}  // namespace
}  // namespace orvane
