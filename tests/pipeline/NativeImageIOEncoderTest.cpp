#include "pipeline/NativeImageIOEncoder.h"

#include <gtest/gtest.h>

#include <cmath>

#include "codecs/ImageDestination.h"
#include "picture/ImageProcessingError.h"
#include "pipeline/ImageAnalyzer.h"
#include "pipeline/ImageDecoder.h"
#include "platform/graphics/RowRenderer.h"
#include "support/TestBuffers.h"
#include "support/TestImages.h"

namespace orvane {
namespace {

using test::Pixel;

EncodingPlan lossy(double quality) { return {.mode = EncodingPlan::Lossy{quality}}; }

Bytes encodeNative(const Image& image, bool hasAlpha, ImageFormat format,
                   const EncodingPlan& plan) {
  return NativeImageIOEncoder::encode(image, hasAlpha, format, plan,
                                      ImageAnalyzer::analyze(RGBABuffer(image)));
}

/// The picture in a file, as straight 8-bit R, G, B, A.
Image decoded(ByteView file) {
  const Image image = ImageDecoder::decodeImageSource(file).image;
  return rendered(image, renderingSpace(image.colorSpace), 8);
}

/// Left half transparent red, right half opaque blue; big enough for chroma to settle.
Image halfTransparent() {
  return test::drawImage(64, 32, ChannelLayout::rgba, AlphaKind::straight, 8, ColorSpace::sRGB(),
                         [](std::size_t x, std::size_t) -> Pixel {
                           return x < 32 ? Pixel{255, 0, 0, 0} : Pixel{0, 0, 255, 255};
                         });
}

void expectNear(const Pixel& actual, const Pixel& expected, int tolerance) {
  for (std::size_t c = 0; c < 4; ++c) EXPECT_NEAR(actual[c], expected[c], tolerance) << c;
}

TEST(NativeImageIOEncoder, showsWhiteBehindTransparencyInJPEG) {
  const Image jpeg = decoded(encodeNative(halfTransparent(), true, ImageFormat::jpeg, lossy(95)));
  expectNear(test::pixelAt(jpeg, 8, 16), {255, 255, 255, 255}, 2);
  expectNear(test::pixelAt(jpeg, 56, 16), {0, 0, 255, 255}, 3);
}

class NativeAlpha : public testing::TestWithParam<ImageFormat::Case> {};

TEST_P(NativeAlpha, keepsTransparency) {
  const Image image = decoded(encodeNative(halfTransparent(), true, GetParam(), lossy(90)));
  EXPECT_LE(test::pixelAt(image, 8, 16)[3], 1);
  expectNear(test::pixelAt(image, 56, 16), {0, 0, 255, 255}, 4);
}

TEST_P(NativeAlpha, dropsAnAlphaChannelThatIsOpaqueThroughout) {
  const Image opaque = test::drawImage(16, 16, ChannelLayout::rgba, AlphaKind::straight, 8,
                                       ColorSpace::sRGB(), [](std::size_t, std::size_t) {
                                         return Pixel{10, 200, 90, 255};
                                       });
  const Bytes file = encodeNative(opaque, false, GetParam(), lossy(90));
  EXPECT_EQ(ImageDecoder::decodeImageSource(file).image.alpha, AlphaKind::none);
}

INSTANTIATE_TEST_SUITE_P(NativeImageIOEncoder, NativeAlpha,
                         testing::Values(ImageFormat::heic, ImageFormat::avif));

TEST(NativeImageIOEncoder, clampsTheQuality) {
  const Image image = test::noisyImage(48, 48);
  const auto encode = [&](ImageFormat format, double quality) {
    return encodeNative(image, false, format, lossy(quality));
  };
  EXPECT_EQ(encode(ImageFormat::jpeg, 150), encode(ImageFormat::jpeg, 100));
  EXPECT_EQ(encode(ImageFormat::jpeg, -5), encode(ImageFormat::jpeg, 0));
  EXPECT_EQ(encode(ImageFormat::jpeg, std::nan("")), encode(ImageFormat::jpeg, 0));
  EXPECT_GT(encode(ImageFormat::jpeg, 100).size(), encode(ImageFormat::jpeg, 90).size());
}

TEST(NativeImageIOEncoder, givesJPEGAndHEICTheMaximumSetting) {
  const Image image = test::noisyImage(96, 96);
  for (const ImageFormat format : {ImageFormat::jpeg, ImageFormat::heic}) {
    const auto* destination = ImageDestination::of(format);
    const auto measurements = test::measured(image);
    const Bytes file = encodeNative(image, false, format, lossy(100));
    EXPECT_EQ(file, destination->encode(image, measurements, 1.0, 1)) << format.displayName();
    EXPECT_NE(file, destination->encode(image, measurements, 0.99, 1)) << format.displayName();
  }
}

TEST(NativeImageIOEncoder, neverGivesAVIFTheMaximumSetting) {
  const Image image = test::noisyImage(48, 48);
  const auto encode = [&](double quality) {
    return encodeNative(image, false, ImageFormat::avif, lossy(quality));
  };
  EXPECT_EQ(encode(100), encode(99));
  EXPECT_EQ(encode(150), encode(99));
}

TEST(NativeImageIOEncoder, failsWhereASideIsLongerThanTheFormatTakes) {
  const auto encode = [](std::size_t width) {
    return encodeNative(test::gradientImage(width, 1), false, ImageFormat::jpeg, lossy(75));
  };
  EXPECT_NO_THROW(encode(65'500));
  try {
    encode(65'501);
    FAIL();
  } catch (const ImageProcessingError& error) {
    EXPECT_EQ(error.localizedDescription(), "Échec de l'encodage au format JPEG.");
  }
}

TEST(NativeImageIOEncoder, encodesLossyPlansOnly) {
  for (const ImageFormat format : {ImageFormat::jpeg, ImageFormat::heic, ImageFormat::avif}) {
    for (const EncodingPlan::Mode& mode : {EncodingPlan::Mode(EncodingPlan::Lossless{}),
                                           EncodingPlan::Mode(EncodingPlan::NearLossless{60})}) {
      try {
        encodeNative(test::gradientImage(8, 8), false, format, {.mode = mode});
        FAIL() << format.displayName();
      } catch (const ImageProcessingError& error) {
        EXPECT_EQ(error.localizedDescription(),
                  "Échec de l'encodage au format " + std::string(format.displayName()) + ".");
      }
    }
  }
}

}  // namespace
}  // namespace orvane
