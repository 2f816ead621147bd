#include <gtest/gtest.h>

#include <array>
#include <random>
#include <vector>

#include "codecs/ImageSource.h"
#include "platform/graphics/ICCProfile.h"
#include "platform/graphics/RowRenderer.h"
#include "support/JXLBuilder.h"
#include "support/TestImages.h"
#include "support/TestProfiles.h"

namespace orvane {
namespace {

using test::JXLOptions;
using test::Pixel;
using Model = ColorSpace::Model;

Image decode(ByteView file) { return ImageSource::create(file)->image(); }

bool isRefused(ByteView file) {
  try {
    decode(file);
    return false;
  } catch (const UnreadableImage&) {
    return true;
  }
}

Image drawGray(std::size_t width, std::size_t height, int bits,
               const std::function<int(std::size_t, std::size_t)>& valueAt) {
  return test::drawImage(width, height, ChannelLayout::gray, AlphaKind::none, bits,
                         ColorSpace::standard(Model::gray),
                         [&](std::size_t x, std::size_t y) -> Pixel {
                           return {static_cast<std::uint16_t>(valueAt(x, y))};
                         });
}

/// Mean difference of what is seen, both rendered into `space`.
double visibleDifference(const Image& left, const Image& right, const ColorSpacePtr& space) {
  return test::meanDifference(rendered(left, space, 8), rendered(right, space, 8));
}

// Recognition

TEST(JXLReader, readsBareCodestreamsAndContainers) {
  const Image drawn = test::gradientImage(13, 7);
  for (const bool inContainer : {false, true}) {
    const Bytes file = test::buildJXL(drawn, {.inContainer = inContainer});
    EXPECT_EQ(file[0], inContainer ? 0x00 : 0xFF);
    const auto source = ImageSource::create(file);
    EXPECT_EQ(source->typeIdentifier(), "public.jpeg-xl");
    EXPECT_EQ(source->frameCount(), 1u);
    EXPECT_EQ(source->orientation(), 1);
    EXPECT_EQ(test::meanDifference(source->image(), drawn), 0);
  }
}

TEST(JXLReader, decodesTheSamePictureAgain) {
  const Bytes file = test::buildJXL(test::gradientImage(13, 7));
  const auto source = ImageSource::create(file);
  EXPECT_EQ(test::meanDifference(source->image(), source->image()), 0);
}

TEST(JXLReader, acceptsStrayBytesAfterTheEnd) {
  const Image drawn = test::gradientImage(13, 7);
  Bytes file = test::buildJXL(drawn);
  file.insert(file.end(), 40, 0xA5);
  EXPECT_EQ(test::meanDifference(decode(file), drawn), 0);
}

TEST(JXLReader, refusesEveryTruncation) {
  const Image drawn = test::noisyImage(16, 11);
  for (const JXLOptions& options :
       {JXLOptions{}, JXLOptions{.inContainer = true}, JXLOptions{.xybDistance = 1.0f}}) {
    const Bytes file = test::buildJXL(drawn, options);
    for (std::size_t length = 0; length < file.size(); ++length) {
      EXPECT_TRUE(isRefused(ByteView(file).first(length))) << length << " of " << file.size();
    }
  }
}

TEST(JXLReader, survivesDamage) {
  std::mt19937 random(7);
  const Bytes file = test::buildJXL(test::noisyImage(24, 24), {.xybDistance = 1.0f});
  for (int attempt = 0; attempt < 300; ++attempt) {
    Bytes damaged = file;
    damaged[2 + random() % (file.size() - 2)] ^= static_cast<std::uint8_t>(1 + random() % 255);
    isRefused(damaged);  // or decoded; nothing else
  }
}

TEST(JXLReader, refusesASignatureWithNothingBehindIt) {
  EXPECT_TRUE(isRefused(Bytes{0xFF, 0x0A}));
  EXPECT_TRUE(isRefused(Bytes{0, 0, 0, 12, 'J', 'X', 'L', ' ', 13, 10, 0x87, 10}));
}

/// A codestream that ends after its header: all defaults but the size (ISO/IEC 18181-1, annex D).
Bytes headerOf(std::uint32_t width, std::uint32_t height) {
  Bytes file{0xFF, 0x0A};
  std::size_t bit = 16;
  const auto put = [&](std::uint32_t value, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i, ++bit) {
      if (bit % 8 == 0) file.push_back(0);
      file.back() |= static_cast<std::uint8_t>((value >> i & 1) << bit % 8);
    }
  };
  const auto putSide = [&](std::uint32_t side) {
    put(3, 2);  // in 30 bits
    put(side - 1, 30);
  };
  put(0, 1);
  putSide(height);
  put(0, 3);
  putSide(width);
  put(1, 1);
  put(1, 1);
  return file;
}

TEST(JXLReader, checksTheLimitsOnTheHeader) {
  EXPECT_NO_THROW(ImageSource::create(headerOf(1000, 1000)));
  EXPECT_THROW(ImageSource::create(headerOf(1'000'001, 1)), UnreadableImage);
  EXPECT_THROW(ImageSource::create(headerOf(1, 1'000'001)), UnreadableImage);
  EXPECT_THROW(ImageSource::create(headerOf(40'000, 40'000)), UnreadableImage);
}

// Layouts and depths

TEST(JXLReader, givesOpaqueColourWithTheFourthChannelFilled) {
  const Image drawn = test::gradientImage(37, 23);
  const Image image = decode(test::buildJXL(drawn));
  EXPECT_TRUE(isOpaqueRendering(image));
  EXPECT_EQ(test::pixelAt(image, 5, 5)[3], 255);
  EXPECT_EQ(test::meanDifference(image, drawn), 0);
}

TEST(JXLReader, fillsTheFourthChannelOf16BitsToo) {
  const Image drawn =
      test::drawImage(9, 5, ChannelLayout::rgba, AlphaKind::none, 16, ColorSpace::sRGB(),
                      [](std::size_t x, std::size_t y) -> Pixel {
                        return {static_cast<std::uint16_t>(x * 7001),
                                static_cast<std::uint16_t>(y * 13007), 257, 65535};
                      });
  const Image image = decode(test::buildJXL(drawn));
  EXPECT_EQ(image.bitsPerComponent, 16);
  EXPECT_EQ(image.alpha, AlphaKind::none);
  EXPECT_EQ(test::meanDifference(image, drawn), 0);
}

TEST(JXLReader, keepsGreyAsGrey) {
  const Image drawn = drawGray(
      16, 16, 8, [](std::size_t x, std::size_t y) { return static_cast<int>(y * 16 + x); });
  const Image image = decode(test::buildJXL(drawn));
  EXPECT_EQ(image.layout, ChannelLayout::gray);
  EXPECT_EQ(image.colorSpace, ColorSpace::standard(Model::gray));
  EXPECT_EQ(test::meanDifference(image, drawn), 0);
}

class JXLReaderOfAlpha : public testing::TestWithParam<AlphaKind> {
 protected:
  void SetUp() override {
    if (GetParam() == AlphaKind::premultiplied && !test::canBuildPremultipliedJXL()) {
      GTEST_SKIP() << "this libjxl cannot write premultiplied alpha";
    }
  }
};
INSTANTIATE_TEST_SUITE_P(Kinds, JXLReaderOfAlpha,
                         testing::Values(AlphaKind::straight, AlphaKind::premultiplied));

TEST_P(JXLReaderOfAlpha, keepsColourAndAlphaAsTheyAreStored) {
  const Image drawn =
      test::drawImage(16, 4, ChannelLayout::rgba, GetParam(), 8, ColorSpace::sRGB(),
                      [](std::size_t x, std::size_t y) -> Pixel {
                        const auto value = static_cast<std::uint16_t>(x * 17);
                        return {static_cast<std::uint16_t>(value * y / 4), value, 0, value};
                      });
  const Image image = decode(test::buildJXL(drawn));
  EXPECT_EQ(image.alpha, GetParam());
  EXPECT_EQ(test::meanDifference(image, drawn), 0);
}

TEST_P(JXLReaderOfAlpha, keepsGreyAndAlphaAsTheyAreStored) {
  const Image drawn =
      test::drawImage(16, 4, ChannelLayout::grayAlpha, GetParam(), 8,
                      ColorSpace::standard(Model::gray), [](std::size_t x, std::size_t y) -> Pixel {
                        const auto value = static_cast<std::uint16_t>(x * 17);
                        return {static_cast<std::uint16_t>(value * y / 4), value};
                      });
  const Image image = decode(test::buildJXL(drawn));
  EXPECT_EQ(image.layout, ChannelLayout::grayAlpha);
  EXPECT_EQ(image.alpha, GetParam());
  EXPECT_EQ(test::meanDifference(image, drawn), 0);
}

TEST(JXLReader, spreads9To16BitsOver16) {
  for (const int bits : {9, 10, 12, 16}) {
    const int maximum = (1 << bits) - 1;
    const Image drawn = drawGray(64, 64, 16, [&](std::size_t x, std::size_t y) {
      const std::int64_t value = static_cast<std::int64_t>(y * 64 + x) * maximum / 4095;
      return static_cast<int>((value * 65535 + maximum / 2) / maximum);
    });
    const Image image = decode(test::buildJXL(drawn, {.bitsPerSample = bits}));
    EXPECT_EQ(image.bitsPerComponent, 16);
    for (std::size_t y = 0; y < 64; ++y) {
      for (std::size_t x = 0; x < 64; ++x) {  // libjxl computes with 24 significant bits
        EXPECT_NEAR(test::pixelAt(image, x, y)[0], test::pixelAt(drawn, x, y)[0], 1);
      }
    }
  }
}

TEST(JXLReader, spreadsFewerThan8BitsOver8) {
  const Image drawn =
      drawGray(16, 2, 8, [](std::size_t x, std::size_t) { return static_cast<int>(x * 17); });
  const Image image = decode(test::buildJXL(drawn, {.bitsPerSample = 4}));
  EXPECT_EQ(image.bitsPerComponent, 8);
  EXPECT_EQ(test::meanDifference(image, drawn), 0);
}

TEST(JXLReader, cutsFloatsTo0And1) {
  const std::array<float, 6> samples{-0.5f, 0.0f, 0.25f, 0.5f, 1.0f, 2.0f};
  const Image image = decode(test::buildFloatJXL(samples));
  EXPECT_EQ(image.bitsPerComponent, 16);
  EXPECT_EQ(test::pixelAt(image, 0, 0), (Pixel{0, 0, 16384, 65535}));
  EXPECT_EQ(test::pixelAt(image, 1, 0), (Pixel{32768, 65535, 65535, 65535}));
}

TEST(JXLReader, spreadsFloatsOver16BitsHoweverShort) {
  const Image drawn = drawGray(64, 16, 16, [](std::size_t x, std::size_t) {
    return static_cast<int>(20000 + x / 16 * 10000);
  });
  for (const auto& [bits, exponentBits] : {std::pair{16, 5}, std::pair{8, 4}}) {
    const Image image = decode(test::buildJXL(
        drawn, {.xybDistance = 0.2f, .bitsPerSample = bits, .exponentBits = exponentBits}));
    EXPECT_EQ(image.bitsPerComponent, 16);
    EXPECT_LT(test::meanDifference(image, drawn), 257);
  }
}

// Orientation, frames, extra channels

TEST(JXLReader, turnsThePictureUpright) {
  const Image drawn = test::gradientImage(7, 4);
  for (int orientation = 1; orientation <= 8; ++orientation) {
    const Bytes file =
        test::buildJXL(drawn, {.orientation = static_cast<JxlOrientation>(orientation)});
    const auto source = ImageSource::create(file);
    EXPECT_EQ(source->orientation(), 1);
    const Image image = source->image();
    ASSERT_EQ(image.width, orientation < 5 ? 7u : 4u);
    ASSERT_EQ(image.height, orientation < 5 ? 4u : 7u);
    for (std::size_t y = 0; y < image.height; ++y) {
      for (std::size_t x = 0; x < image.width; ++x) {
        const std::array<std::pair<std::size_t, std::size_t>, 8> stored{{{x, y},
                                                                         {6 - x, y},
                                                                         {6 - x, 3 - y},
                                                                         {x, 3 - y},
                                                                         {y, x},
                                                                         {y, 3 - x},
                                                                         {6 - y, 3 - x},
                                                                         {6 - y, x}}};
        const auto [fromX, fromY] = stored[static_cast<std::size_t>(orientation - 1)];
        EXPECT_EQ(test::pixelAt(image, x, y), test::pixelAt(drawn, fromX, fromY)) << orientation;
      }
    }
  }
}

TEST(JXLReader, countsTheFramesOfAnAnimationAndDecodesTheFirst) {
  const std::vector<Image> frames{test::gradientImage(20, 10), test::noisyImage(20, 10),
                                  test::noisyImage(20, 10)};
  const Bytes file = test::buildJXL(frames);
  const auto source = ImageSource::create(file);
  EXPECT_EQ(source->frameCount(), 3u);
  EXPECT_EQ(test::meanDifference(source->image(), frames[0]), 0);
}

TEST(JXLReader, composesTheFirstFrameOnTheCanvas) {
  const std::vector<Image> frames{test::alphaGradientImage(8, 6), test::alphaGradientImage(8, 6)};
  const Image image = decode(test::buildJXL(frames, {.border = 2}));
  ASSERT_EQ(image.width, 12u);
  ASSERT_EQ(image.height, 10u);
  EXPECT_EQ(test::pixelAt(image, 0, 0), (Pixel{0, 0, 0, 0}));
  EXPECT_EQ(test::pixelAt(image, 11, 9), (Pixel{0, 0, 0, 0}));
  EXPECT_EQ(test::pixelAt(image, 9, 5), test::pixelAt(frames[0], 7, 3));
}

TEST(JXLReader, refusesAnAnimationThatEndsTooSoon) {
  const std::vector<Image> frames(4, test::noisyImage(20, 10));
  const Bytes file = test::buildJXL(frames);
  EXPECT_THROW(ImageSource::create(ByteView(file).first(file.size() / 2)), UnreadableImage);
}

TEST(JXLReader, leavesExtraChannelsOut) {
  for (const Image& drawn : {test::gradientImage(9, 9), test::alphaGradientImage(9, 9)}) {
    const Image image = decode(test::buildJXL(drawn, {.extraChannel = JXL_CHANNEL_DEPTH}));
    EXPECT_EQ(image.alpha, drawn.alpha);
    EXPECT_EQ(test::meanDifference(image, drawn), 0);
  }
}

// Without a profile of inks, each colour is what its ink and black leave of the light.
TEST(JXLReader, readsInksAsRGB) {
  for (const Image& drawn : {test::gradientImage(9, 5), test::alphaGradientImage(9, 5)}) {
    const Image image = decode(test::buildJXL(drawn, {.extraChannel = JXL_CHANNEL_BLACK}));
    EXPECT_TRUE(image.colorSpace->isSRGB());
    EXPECT_EQ(image.alpha, drawn.alpha);
    for (std::size_t at = 0; at < 9 * 5; ++at) {
      const int black = at == 0 ? 0 : 128;
      Pixel expected = test::pixelAt(drawn, at % 9, at / 9);
      for (std::size_t color = 0; color < 3; ++color) {
        expected[color] = static_cast<std::uint16_t>((expected[color] * black + 127) / 255);
      }
      EXPECT_EQ(test::pixelAt(image, at % 9, at / 9), expected) << at;
    }
  }
}

TEST(JXLReader, readsTurnedInksByTheirProfile) {
  const Image drawn = test::drawImage(9, 5, ChannelLayout::rgb, AlphaKind::none, 16,
                                      ColorSpace::sRGB(), [](std::size_t, std::size_t) {
                                        return Pixel{65'535, 30'000, 0, 0};
                                      });
  const Image image = decode(test::buildJXL(drawn, {.icc = test::cmykProfile(),
                                                    .orientation = JXL_ORIENT_ROTATE_90_CW,
                                                    .extraChannel = JXL_CHANNEL_BLACK}));
  ASSERT_EQ(image.width, 5u);
  const auto press = ColorSpace::fromICC(test::cmykProfile(), ColorSpace::Model::cmyk);
  const auto rgbOf = [&](std::uint16_t black) {
    const Image inks = test::drawImage(1, 1, ChannelLayout::cmyk, AlphaKind::none, 16, press,
                                       [=](std::size_t, std::size_t) {
                                         return Pixel{0, 35'535, 65'535, black};
                                       });
    return test::pixelAt(rendered(inks, ColorSpace::sRGB(), 16), 0, 0);
  };
  EXPECT_EQ(test::pixelAt(image, 4, 0), rgbOf(65'535)) << "the first pixel that is stored";
  EXPECT_EQ(test::pixelAt(image, 0, 0), rgbOf(65'535 - 128 * 257));
}

TEST(JXLReader, refusesGreyWithBlack) {
  const Image gray = test::drawImage(9, 9, ChannelLayout::gray, AlphaKind::none, 8,
                                     ColorSpace::standard(ColorSpace::Model::gray),
                                     [](std::size_t x, std::size_t) {
                                       return Pixel{static_cast<std::uint16_t>(x), 0, 0, 0};
                                     });
  const Bytes file = test::buildJXL(gray, {.extraChannel = JXL_CHANNEL_BLACK});
  EXPECT_THROW(ImageSource::create(file), UnreadableImage);
}

// Colour

TEST(JXLReader, knowsEnumeratedColoursByTheirCodePoints) {
  struct Row {
    JxlPrimaries primaries;
    JxlTransferFunction transfer;
    CodePoints codePoints;
  };
  constexpr std::array rows{Row{JXL_PRIMARIES_SRGB, JXL_TRANSFER_FUNCTION_SRGB, sRGBCodePoints},
                            Row{JXL_PRIMARIES_P3, JXL_TRANSFER_FUNCTION_SRGB, displayP3CodePoints},
                            Row{JXL_PRIMARIES_2100, JXL_TRANSFER_FUNCTION_709, {9, 1}},
                            Row{JXL_PRIMARIES_2100, JXL_TRANSFER_FUNCTION_PQ, {9, 16}},
                            Row{JXL_PRIMARIES_2100, JXL_TRANSFER_FUNCTION_HLG, {9, 18}}};
  const Image drawn = test::patchImage(48, 32, ColorSpace::sRGB());
  for (const Row& row : rows) {
    for (const std::optional<float> distance : {std::optional<float>(), std::optional(0.2f)}) {
      const auto encoding = test::jxlEncoding(JXL_COLOR_SPACE_RGB, row.primaries, row.transfer);
      const Image image =
          decode(test::buildJXL(drawn, {.xybDistance = distance, .encoding = encoding}));
      EXPECT_EQ(image.colorSpace->codePoints(), row.codePoints);
      EXPECT_LE(test::meanDifference(image, drawn), distance ? 2 : 0) << row.transfer;
    }
  }
}

TEST(JXLReader, countsSRGBAsTheNamedSpace) {
  EXPECT_EQ(decode(test::buildJXL(test::gradientImage(4, 4))).colorSpace, ColorSpace::sRGB());
}

TEST(JXLReader, tellsTheTwoWhitesOfP3Apart) {
  auto encoding =
      test::jxlEncoding(JXL_COLOR_SPACE_RGB, JXL_PRIMARIES_P3, JXL_TRANSFER_FUNCTION_DCI);
  encoding.white_point = JXL_WHITE_POINT_DCI;
  const Image image = decode(test::buildJXL(test::gradientImage(4, 4), {.encoding = encoding}));
  EXPECT_EQ(image.colorSpace->codePoints(), (CodePoints{11, 17}));
}

TEST(JXLReader, takesOtherColoursFromAProfile) {
  auto gamma =
      test::jxlEncoding(JXL_COLOR_SPACE_RGB, JXL_PRIMARIES_CUSTOM, JXL_TRANSFER_FUNCTION_GAMMA);
  gamma.gamma = 256.0 / 563;
  const std::array red{0.64, 0.33}, green{0.21, 0.71}, blue{0.15, 0.06};
  std::ranges::copy(red, gamma.primaries_red_xy);
  std::ranges::copy(green, gamma.primaries_green_xy);
  std::ranges::copy(blue, gamma.primaries_blue_xy);
  const auto adobe = ColorSpace::fromICC(test::adobeRGBProfile(), Model::rgb);
  const Image drawn = test::patchImage(48, 32, adobe);
  for (const std::optional<float> distance : {std::optional<float>(), std::optional(0.2f)}) {
    const Image image = decode(test::buildJXL(drawn, {.xybDistance = distance, .encoding = gamma}));
    EXPECT_FALSE(image.colorSpace->isSRGB());
    EXPECT_LE(visibleDifference(image, drawn, adobe), distance ? 1.5 : 0.5);
  }
}

TEST(JXLReader, keepsGreyCurves) {
  const Image drawn =
      drawGray(16, 2, 8, [](std::size_t x, std::size_t) { return static_cast<int>(x * 17); });
  const auto linear =
      test::jxlEncoding(JXL_COLOR_SPACE_GRAY, JXL_PRIMARIES_SRGB, JXL_TRANSFER_FUNCTION_LINEAR);
  const Image image = decode(test::buildJXL(drawn, {.encoding = linear}));
  EXPECT_EQ(image.colorSpace->codePoints()->transfer, 8);
  EXPECT_EQ(test::meanDifference(image, drawn), 0);

  const Bytes profile = test::grayGamma22Profile();
  const Image withProfile = decode(test::buildJXL(drawn, {.icc = profile}));
  EXPECT_TRUE(std::ranges::equal(withProfile.colorSpace->iccData(), profile));
}

TEST(JXLReader, keepsAnEmbeddedProfile) {
  const Bytes profile = test::displayP3Profile();
  const Image image = decode(test::buildJXL(test::gradientImage(9, 9), {.icc = profile}));
  EXPECT_TRUE(std::ranges::equal(image.colorSpace->iccData(), profile));
}

TEST(JXLReader, countsAnEmbeddedProfileThatIsSRGBAsSRGB) {
  const Image drawn = test::patchImage(48, 32, ColorSpace::sRGB());
  for (const std::optional<float> distance : {std::optional<float>(), std::optional(0.2f)}) {
    const Image image = decode(
        test::buildJXL(drawn, {.xybDistance = distance, .icc = test::otherMakeSRGBProfile()}));
    EXPECT_TRUE(image.colorSpace->isSRGB());
    EXPECT_LE(test::meanDifference(image, drawn), distance ? 1.5 : 0);
  }
}

/// Wider than Display P3, on another white than JPEG XL has a name for.
Bytes wideProfile() {
  const cmsCIExyYTRIPLE primaries{{0.700, 0.295, 1}, {0.200, 0.750, 1}, {0.140, 0.055, 1}};
  const ToneCurveHandle curve(cmsBuildGamma(nullptr, 1.8));
  const std::array<cmsToneCurve*, 3> curves{curve.get(), curve.get(), curve.get()};
  return ICCProfile::serialized(
      ProfileHandle(cmsCreateRGBProfile(cmsD50_xyY(), &primaries, curves.data())));
}

/// Patches that are out of sRGB's reach in `space`.
Image vividImage(const ColorSpacePtr& space, AlphaKind alpha) {
  const std::uint16_t opacity = alpha == AlphaKind::none ? 255 : 128;
  return test::drawImage(48, 16, ChannelLayout::rgba, alpha, 8, space,
                         [&](std::size_t x, std::size_t) -> Pixel {
                           return x < 16   ? Pixel{230, 40, 40, opacity}
                                  : x < 32 ? Pixel{40, 220, 50, opacity}
                                           : Pixel{60, 60, 210, opacity};
                         });
}

TEST(JXLReader, givesPicturesInXYBTheirEmbeddedProfileBack) {
  const Bytes profile = wideProfile();
  const auto space = ColorSpace::fromICC(profile, Model::rgb);
  for (const auto alpha : {AlphaKind::none, AlphaKind::straight}) {
    const Image drawn = vividImage(space, alpha);
    const Image image = decode(test::buildJXL(drawn, {.xybDistance = 0.2f, .icc = profile}));
    EXPECT_EQ(image.bitsPerComponent, 8);
    EXPECT_EQ(image.alpha, alpha);
    EXPECT_TRUE(std::ranges::equal(image.colorSpace->iccData(), profile));
    EXPECT_LE(test::meanDifference(image, drawn), 2);
  }
}

TEST(JXLReader, givesGreyInXYBTheRightShade) {
  const Bytes profile = test::grayGamma22Profile();
  const auto space = ColorSpace::fromICC(profile, Model::gray);
  Image drawn = drawGray(
      32, 8, 8, [](std::size_t x, std::size_t) { return static_cast<int>(40 + x / 8 * 60); });
  drawn.colorSpace = space;
  const Image image = decode(test::buildJXL(drawn, {.xybDistance = 0.2f, .icc = profile}));
  EXPECT_EQ(image.layout, ChannelLayout::gray);
  EXPECT_LE(visibleDifference(image, drawn, ColorSpace::sRGB()), 1);
}

TEST(JXLReader, givesLinearLightInXYBSixteenBits) {
  const auto encoding =
      test::jxlEncoding(JXL_COLOR_SPACE_RGB, JXL_PRIMARIES_SRGB, JXL_TRANSFER_FUNCTION_LINEAR);
  const Image drawn =
      vividImage(ColorSpace::fromCodePoints({1, 8}, Model::rgb), AlphaKind::straight);
  const Image image = decode(test::buildJXL(drawn, {.xybDistance = 0.2f, .encoding = encoding}));
  EXPECT_EQ(image.bitsPerComponent, 16);
  EXPECT_EQ(image.colorSpace->codePoints(), (CodePoints{1, 8}));
  EXPECT_LE(visibleDifference(image, drawn, ColorSpace::sRGB()), 2);
}

TEST(JXLReader, givesAnEmbeddedLinearProfileInXYBSixteenBits) {
  const auto linear = ColorSpace::fromCodePoints({9, 8}, Model::rgb);
  const Bytes profile(linear->iccData().begin(), linear->iccData().end());
  const Image drawn = vividImage(linear, AlphaKind::none);
  const Image image = decode(test::buildJXL(drawn, {.xybDistance = 0.2f, .icc = profile}));
  EXPECT_EQ(image.bitsPerComponent, 16);
  EXPECT_TRUE(std::ranges::equal(image.colorSpace->iccData(), profile));
  EXPECT_LE(visibleDifference(image, drawn, ColorSpace::fromCodePoints({9, 13}, Model::rgb)), 2);
}

TEST(JXLReader, keepsTheDepthOfLinearLightThatIsStoredAsItIs) {
  const auto encoding =
      test::jxlEncoding(JXL_COLOR_SPACE_RGB, JXL_PRIMARIES_SRGB, JXL_TRANSFER_FUNCTION_LINEAR);
  const Image drawn = vividImage(ColorSpace::fromCodePoints({1, 8}, Model::rgb), AlphaKind::none);
  const Image image = decode(test::buildJXL(drawn, {.encoding = encoding}));
  EXPECT_EQ(test::maximumDifference(image, drawn), 0);
}

TEST_P(JXLReaderOfAlpha, keepsTheLightThatAlphaWasMultipliedIn) {
  const auto encoding =
      test::jxlEncoding(JXL_COLOR_SPACE_RGB, JXL_PRIMARIES_SRGB, JXL_TRANSFER_FUNCTION_LINEAR);
  const Image drawn = test::drawImage(
      48, 16, ChannelLayout::rgba, GetParam(), 8, ColorSpace::fromCodePoints({1, 8}, Model::rgb),
      [](std::size_t x, std::size_t) -> Pixel {
        return x < 24 ? Pixel{120, 30, 30, 128} : Pixel{30, 120, 80, 128};
      });
  const Image image = decode(test::buildJXL(drawn, {.xybDistance = 0.2f, .encoding = encoding}));
  EXPECT_EQ(image.alpha, GetParam());
  EXPECT_LE(visibleDifference(image, drawn, ColorSpace::sRGB()), 2);
}

}  // namespace
}  // namespace orvane
