#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <thread>
#include <vector>

#include "codecs/ImageDestination.h"
#include "codecs/ImageSource.h"
#include "codecs/heic/HEIFLibrary.h"
#include "support/TestBuffers.h"
#include "support/TestImages.h"
#include "support/TestProfiles.h"

namespace orvane {
namespace {

using test::Pixel;

Bytes encode(const Image& image, double quality = 0.75, int threads = 1) {
  return ImageDestination::of(ImageFormat::heic)
      ->encode(image, test::measured(image), quality, threads);
}

Image decode(ByteView file) { return heicReader.open(file)->image(); }

bool contains(const Bytes& file, std::string_view text) {
  return !std::ranges::search(file, text).empty();
}

Image flatImage(std::size_t width, std::size_t height, Pixel color, AlphaKind alpha) {
  return test::drawImage(width, height, ChannelLayout::rgba, alpha, 8, ColorSpace::sRGB(),
                         [&](std::size_t, std::size_t) { return color; });
}

void expectNear(const Pixel& got, const Pixel& want, int tolerance, const char* what) {
  for (std::size_t c = 0; c < 4; ++c) {
    EXPECT_NEAR(got[c], want[c], tolerance) << what << " channel " << c;
  }
}

double meanAlphaDifference(const Image& left, const Image& right) {
  double sum = 0;
  for (std::size_t y = 0; y < left.height; ++y) {
    for (std::size_t x = 0; x < left.width; ++x) {
      sum += std::abs(test::pixelAt(left, x, y)[3] - test::pixelAt(right, x, y)[3]);
    }
  }
  return sum / static_cast<double>(left.width * left.height);
}

TEST(HEICWriter, spendsMoreOnEveryPointOfQuality) {
  const Image image = test::noisyImage(256, 192);
  std::size_t previous = 0;
  for (const double quality : {0.60, 0.61, 0.62, 0.63, 0.64, 0.65, 0.66}) {
    const std::size_t size = encode(image, quality).size();
    EXPECT_GT(size, previous) << quality;
    previous = size;
  }
}

TEST(HEICWriter, keepsFlatColoursInEverySpace) {
  for (const ColorSpacePtr& space :
       {ColorSpace::sRGB(), ColorSpace::fromCodePoints(displayP3CodePoints, ColorSpace::Model::rgb),
        ColorSpace::fromICC(test::adobeRGBProfile(), ColorSpace::Model::rgb)}) {
    const Image patches = test::patchImage(96, 64, space);
    const Image image = decode(encode(patches, 0.95));
    EXPECT_EQ(image.colorSpace->codePoints(), space->codePoints());
    EXPECT_EQ(image.colorSpace->isSRGB(), space->isSRGB());
    for (const std::size_t x : {16u, 48u, 80u}) {
      for (const std::size_t y : {16u, 48u}) {
        expectNear(test::pixelAt(image, x, y), test::pixelAt(patches, x, y), 2, "patch");
      }
    }
  }
}

TEST(HEICWriter, saysTheSpaceInCodePointsWhereTheyCan) {
  const Image p3 = test::patchImage(
      64, 64, ColorSpace::fromCodePoints(displayP3CodePoints, ColorSpace::Model::rgb));
  EXPECT_TRUE(contains(encode(p3), "nclx"));
  EXPECT_FALSE(contains(encode(p3), "prof"));
}

TEST(HEICWriter, saysTheSpaceInAProfileWhereItMust) {
  const Bytes profile = test::adobeRGBProfile();
  const Bytes file =
      encode(test::patchImage(64, 64, ColorSpace::fromICC(profile, ColorSpace::Model::rgb)));
  EXPECT_TRUE(contains(file, "prof"));
  EXPECT_FALSE(contains(file, "nclx"));
  EXPECT_TRUE(std::ranges::equal(decode(file).colorSpace->iccData(), profile));
}

TEST(HEICWriter, isWhatPhonesOpen) {
  const Bytes file = encode(test::gradientImage(64, 64));
  EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(file.data()) + 4, 8), "ftypheic");
  EXPECT_TRUE(contains(file, "mif1"));
  const std::string_view hvcC = "hvcC";
  const auto configuration = std::ranges::search(file, hvcC).end();
  EXPECT_EQ(configuration[1] & 0x1F, 3) << "Main Still Picture";
  EXPECT_EQ(configuration[16] & 3, 1) << "4:2:0";
  EXPECT_EQ(configuration[17] & 7, 0) << "8 bits";
}

TEST(HEICWriter, holdsEverySize) {
  const Pixel color{200, 120, 60, 255};
  for (const auto& [width, height] : {std::pair<std::size_t, std::size_t>{1, 1},
                                      {1, 9},
                                      {3, 5},
                                      {15, 15},
                                      {16, 16},
                                      {63, 65},
                                      {64, 64},
                                      {257, 129},
                                      {1000, 1}}) {
    const Image image = decode(encode(flatImage(width, height, color, AlphaKind::none), 0.95));
    ASSERT_EQ(image.width, width);
    ASSERT_EQ(image.height, height);
    EXPECT_TRUE(isOpaqueRendering(image));
    expectNear(test::pixelAt(image, 0, 0), color, 2, "first pixel");
    expectNear(test::pixelAt(image, width - 1, height - 1), color, 2, "last pixel");
  }
}

TEST(HEICWriter, keepsEveryPixelInItsPlace) {
  const Image gradient = test::gradientImage(257, 129);
  EXPECT_LT(test::meanDifference(decode(encode(gradient, 0.95)), gradient), 1);
}

TEST(HEICWriter, keepsAlphaNearlyWithoutLossWhateverTheQuality) {
  for (const auto& [width, height] :
       {std::pair<std::size_t, std::size_t>{96, 64}, {33, 17}, {1, 1}}) {
    const Image picture = test::alphaGradientImage(width, height);
    for (const double quality : {0.0, 0.75}) {
      const Image image = decode(encode(picture, quality));
      EXPECT_EQ(image.alpha, AlphaKind::straight);
      ASSERT_EQ(image.width, width);
      EXPECT_LT(meanAlphaDifference(image, picture), 0.5) << width << " at " << quality;
    }
  }
}

TEST(HEICWriter, keepsFlatAlphaExactly) {
  const Image picture =
      test::drawImage(128, 64, ChannelLayout::rgba, AlphaKind::straight, 8, ColorSpace::sRGB(),
                      [](std::size_t x, std::size_t) -> Pixel {
                        return {90, 140, 40, static_cast<std::uint16_t>(x < 64 ? 0 : 255)};
                      });
  const Image image = decode(encode(picture));
  EXPECT_EQ(test::pixelAt(image, 16, 32)[3], 0);
  EXPECT_EQ(test::pixelAt(image, 112, 32)[3], 255);
}

TEST(HEICWriter, writesNoAlphaForPicturesWithout) {
  EXPECT_FALSE(contains(encode(test::gradientImage(64, 64)), "auxl"));
  EXPECT_TRUE(contains(encode(test::alphaGradientImage(64, 64)), "auxl"));
}

TEST(HEICWriter, storesPremultipliedColoursStraight) {
  const Image picture = flatImage(64, 64, {100, 50, 0, 128}, AlphaKind::premultiplied);
  const Image image = decode(encode(picture, 0.95));
  EXPECT_EQ(image.alpha, AlphaKind::straight);
  expectNear(test::pixelAt(image, 32, 32), {199, 100, 0, 128}, 3, "middle");
}

TEST(HEICWriter, keepsTransparentColoursOutOfTheVisibleOnes) {
  // Blue where nothing is to be seen, red beside it, in the same chroma sample.
  const Image picture =
      test::drawImage(64, 64, ChannelLayout::rgba, AlphaKind::straight, 8, ColorSpace::sRGB(),
                      [](std::size_t x, std::size_t) -> Pixel {
                        return x % 2 == 0 ? Pixel{220, 30, 40, 255} : Pixel{30, 30, 220, 0};
                      });
  const Pixel got = test::pixelAt(decode(encode(picture, 0.95)), 32, 32);
  EXPECT_GT(got[0], got[2] + 120);
}

TEST(HEICWriter, takesPicturesOfEveryForm) {
  const Image gray = test::drawImage(64, 64, ChannelLayout::gray, AlphaKind::none, 8,
                                     ColorSpace::standard(ColorSpace::Model::gray),
                                     [](std::size_t, std::size_t) -> Pixel { return {77}; });
  expectNear(test::pixelAt(decode(encode(gray, 0.95)), 20, 20), {77, 77, 77, 255}, 2, "grey");
  const Image deep = test::drawImage(64, 64, ChannelLayout::rgb, AlphaKind::none, 16,
                                     ColorSpace::sRGB(), [](std::size_t, std::size_t) -> Pixel {
                                       return {60000, 30000, 10000};
                                     });
  expectNear(test::pixelAt(decode(encode(deep, 0.95)), 20, 20), {233, 117, 39, 255}, 2, "deep");
}

TEST(HEICWriter, growsWithQuality) {
  const Image picture = test::noisyImage(128, 96);
  std::size_t last = 0;
  for (const double quality : {0.0, 0.3, 0.6, 0.8, 0.95, 1.0}) {
    const std::size_t size = encode(picture, quality).size();
    EXPECT_GT(size, last) << quality;
    last = size;
  }
}

TEST(HEICWriter, codesPhotographsAndDrawingsInTheirOwnWays) {
  const Image image = test::noisyImage(256, 192);
  const auto codedAs = [&](ContentClass contentClass) {
    PictureMeasurements measurements = test::measured(image);
    measurements.characteristics.contentClass = contentClass;
    return ImageDestination::of(ImageFormat::heic)->encode(image, measurements, 0.75, 1);
  };
  EXPECT_NE(codedAs(ContentClass::photo), codedAs(ContentClass::illustration));
  EXPECT_EQ(codedAs(ContentClass::photo), codedAs(ContentClass::detailedPhoto));
}

TEST(HEICWriter, givesTheSameBytesOnAnyNumberOfThreads) {
  for (const Image& picture : {test::noisyImage(1300, 801), test::alphaGradientImage(801, 1300),
                               test::noisyImage(90, 70)}) {
    const Bytes file = encode(picture);
    for (const int threads : {2, 3, 8}) EXPECT_EQ(encode(picture, 0.75, threads), file) << threads;
  }
}

TEST(HEICWriter, givesTheSameBytesOnEveryThread) {
  const Image picture = test::noisyImage(96, 64);
  std::vector<Bytes> files(4);
  {
    std::vector<std::jthread> threads;
    for (Bytes& file : files) {
      threads.emplace_back([&picture, &file] { file = encode(picture); });
    }
  }
  for (const Bytes& file : files) EXPECT_EQ(file, files.front());
  EXPECT_FALSE(files.front().empty());
}

}  // namespace
}  // namespace orvane
