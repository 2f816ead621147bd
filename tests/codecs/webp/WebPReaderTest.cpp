#include <gtest/gtest.h>

#include "codecs/ImageLimits.h"
#include "codecs/ImageSource.h"
#include "support/JPEGBuilder.h"
#include "support/TestImages.h"
#include "support/TestProfiles.h"
#include "support/WebPBuilder.h"

namespace orvane::test {
namespace {

Image decode(ByteView file) { return ImageSource::create(file)->image(); }

TEST(WebPReader, readsLosslessStillsToTheirValues) {
  const Image drawn = gradientImage(37, 23);
  const Bytes file = encodeWebP(drawn, WebPCoding::lossless);
  const auto source = ImageSource::create(file);
  EXPECT_EQ(source->typeIdentifier(), "org.webmproject.webp");
  EXPECT_EQ(source->frameCount(), 1U);
  EXPECT_EQ(source->orientation(), 1);
  const Image image = source->image();
  EXPECT_TRUE(isOpaqueRendering(image));
  EXPECT_TRUE(image.colorSpace->isSRGB());
  EXPECT_EQ(meanDifference(image, drawn), 0);
}

TEST(WebPReader, readsAlphaAsStraight) {
  const Image drawn = alphaGradientImage(40, 21);
  const Image image = decode(encodeWebP(drawn, WebPCoding::lossless));
  EXPECT_EQ(image.alpha, AlphaKind::straight);
  EXPECT_EQ(meanDifference(image, drawn), 0);
}

TEST(WebPReader, isOpaqueWhereALosslessStillDoesNotUseItsAlpha) {
  const Image drawn = alphaGradientImage(40, 21);
  const Bytes still = withUnusedAlpha(encodeWebP(drawn, WebPCoding::lossless));
  for (const Bytes& file : {still, withMetadata(still, {.exif = exifBlock(1)})}) {
    const Image image = decode(file);
    EXPECT_TRUE(isOpaqueRendering(image));
    for (std::size_t x = 0; x < image.width; ++x) {
      Pixel expected = pixelAt(drawn, x, 5);
      expected[3] = 255;
      ASSERT_EQ(pixelAt(image, x, 5), expected) << x;
    }
  }
}

TEST(WebPReader, isOpaqueOnlyWhereAFrameThatDoesNotUseItsAlphaLies) {
  const Bytes frame = withUnusedAlpha(encodeWebP(alphaGradientImage(10, 6), WebPCoding::lossless));
  const Image image = decode(animateWebP(20, 12, {{frame, 4, 2}, {frame}}));
  for (std::size_t y = 0; y < image.height; ++y) {
    for (std::size_t x = 0; x < image.width; ++x) {
      const bool isInside = x >= 4 && x < 14 && y >= 2 && y < 8;
      ASSERT_EQ(pixelAt(image, x, y)[3], isInside ? 255 : 0) << x << ", " << y;
    }
  }
}

TEST(WebPReader, readsLossyStills) {
  const Image drawn = gradientImage(65, 33);
  const Image image = decode(encodeWebP(drawn, WebPCoding::lossy));
  EXPECT_TRUE(isOpaqueRendering(image));
  EXPECT_LT(meanDifference(image, drawn), 5);
}

TEST(WebPReader, readsLossyStillsWithAlpha) {
  const Image drawn = alphaGradientImage(64, 32);
  const Image image = decode(encodeWebP(drawn, WebPCoding::lossy));
  ASSERT_EQ(image.alpha, AlphaKind::straight);
  for (std::size_t x = 0; x < image.width; ++x) {
    EXPECT_EQ(pixelAt(image, x, 5)[3], pixelAt(drawn, x, 5)[3]) << x;  // coded without loss
  }
}

TEST(WebPReader, readsASinglePixel) {
  const Image drawn = gradientImage(1, 1);
  EXPECT_EQ(meanDifference(decode(encodeWebP(drawn, WebPCoding::lossless)), drawn), 0);
}

TEST(WebPReader, takesTheColourSpaceFromTheProfile) {
  const Bytes still = encodeWebP(gradientImage(8, 8), WebPCoding::lossless);
  const ColorSpacePtr space = decode(withMetadata(still, {.icc = displayP3Profile()})).colorSpace;
  EXPECT_EQ(Bytes(space->iccData().begin(), space->iccData().end()), displayP3Profile());
}

TEST(WebPReader, isSRGBWhereTheProfileIsUnusable) {
  const Bytes still = encodeWebP(gradientImage(8, 8), WebPCoding::lossless);
  for (const Bytes& profile : {Bytes(300, 9), grayGamma22Profile()}) {
    EXPECT_TRUE(decode(withMetadata(still, {.icc = profile})).colorSpace->isSRGB());
  }
}

TEST(WebPReader, refusesProfilesPastTheLimit) {
  const Bytes still = encodeWebP(gradientImage(8, 8), WebPCoding::lossless);
  const Bytes profile(ImageLimits::maximumICCBytes + 1);
  EXPECT_THROW(decode(withMetadata(still, {.icc = profile})), UnreadableImage);
}

TEST(WebPReader, takesTheOrientationFromExif) {
  const Bytes still = encodeWebP(gradientImage(8, 8), WebPCoding::lossy);
  for (std::uint8_t orientation = 1; orientation <= 8; ++orientation) {
    const Bytes file = withMetadata(still, {.exif = exifBlock(orientation)});
    EXPECT_EQ(ImageSource::create(file)->orientation(), orientation);
  }
  const Bytes broken = withMetadata(still, {.exif = {'M', 'M', 0}});
  EXPECT_EQ(ImageSource::create(broken)->orientation(), 1);
}

TEST(WebPReader, placesTheFirstFrameOfAnAnimationOnATransparentCanvas) {
  const Image first = gradientImage(20, 10);
  const Bytes file =
      animateWebP(50, 40,
                  {{encodeWebP(first, WebPCoding::lossless), 6, 4},
                   {encodeWebP(patchImage(50, 40, ColorSpace::sRGB()), WebPCoding::lossy)}});
  const auto source = ImageSource::create(file);
  EXPECT_EQ(source->frameCount(), 2U);
  const Image image = source->image();
  ASSERT_EQ(image.width, 50U);
  ASSERT_EQ(image.height, 40U);
  EXPECT_EQ(image.alpha, AlphaKind::straight);
  for (std::size_t y = 0; y < image.height; ++y) {
    for (std::size_t x = 0; x < image.width; ++x) {
      const bool isInside = x >= 6 && x < 26 && y >= 4 && y < 14;
      const Pixel expected = isInside ? pixelAt(first, x - 6, y - 4) : Pixel{};
      ASSERT_EQ(pixelAt(image, x, y), expected) << x << ", " << y;
    }
  }
}

TEST(WebPReader, isOpaqueWhereTheFirstFrameFillsTheCanvas) {
  const Image first = gradientImage(20, 10);
  const Image second = alphaGradientImage(20, 10);
  const Image image = decode(animateWebP(
      20, 10,
      {{encodeWebP(first, WebPCoding::lossless)}, {encodeWebP(second, WebPCoding::lossless)}}));
  EXPECT_TRUE(isOpaqueRendering(image));
  EXPECT_EQ(meanDifference(image, first), 0);
}

TEST(WebPReader, refusesEveryTruncation) {
  const Bytes lossy = encodeWebP(alphaGradientImage(16, 16), WebPCoding::lossy);
  const Bytes lossless = withMetadata(encodeWebP(gradientImage(16, 16), WebPCoding::lossless),
                                      {.icc = displayP3Profile(), .exif = exifBlock(3)});
  const Bytes frame = encodeWebP(gradientImage(8, 8), WebPCoding::lossless);
  const Bytes animated = animateWebP(8, 8, {{frame}, {frame}});
  for (const Bytes& file : {lossy, lossless, animated}) {
    EXPECT_NO_THROW(decode(file));
    for (std::size_t size = 0; size < file.size(); ++size) {
      EXPECT_THROW(decode(ByteView(file).first(size)), UnreadableImage) << size;
    }
  }
}

TEST(WebPReader, refusesDataThatEndsBeforeThePicture) {
  for (const WebPCoding coding : {WebPCoding::lossy, WebPCoding::lossless}) {
    const Bytes file = encodeWebP(noisyImage(64, 64), coding);
    EXPECT_NO_THROW(decode(withShortenedData(file, 0)));
    for (const std::size_t count : {20U, 200U, 1000U}) {
      EXPECT_THROW(decode(withShortenedData(file, count)), UnreadableImage) << count;
    }
  }
}

TEST(WebPReader, refusesADamagedContainer) {
  const Bytes still = encodeWebP(gradientImage(8, 8), WebPCoding::lossy);
  Bytes unknownStart = still;
  unknownStart[12] = 'X';  // "XP8 "
  EXPECT_THROW(decode(unknownStart), UnreadableImage);
  Bytes noKeyFrame = still;
  noKeyFrame[20] |= 1;  // RFC 6386 clause 9.1
  EXPECT_THROW(decode(noKeyFrame), UnreadableImage);
  Bytes otherCanvas = withMetadata(still, {.exif = exifBlock(1)});
  otherCanvas[24] += 1;  // VP8X: the width less one
  EXPECT_THROW(decode(otherCanvas), UnreadableImage);
}

TEST(WebPReader, refusesACanvasPastTheLimits) {
  const Bytes frame = encodeWebP(gradientImage(8, 8), WebPCoding::lossless);
  Bytes file = animateWebP(8, 8, {{frame}, {frame}});
  for (std::size_t at = 24; at < 26; ++at) file[at] = 0xFF;  // 65 536 wide,
  for (std::size_t at = 27; at < 29; ++at) file[at] = 0xFF;  // 65 536 high: 2³² pixels
  EXPECT_THROW(decode(file), UnreadableImage);
  file[28] = 0x7F;  // 2³¹
  EXPECT_THROW(decode(file), UnreadableImage);
}

TEST(WebPReader, acceptsBytesAfterTheEnd) {
  Bytes file = encodeWebP(gradientImage(8, 8), WebPCoding::lossless);
  file.insert(file.end(), 33, 0xAA);
  EXPECT_EQ(meanDifference(decode(file), gradientImage(8, 8)), 0);
}

}  // namespace
}  // namespace orvane::test
