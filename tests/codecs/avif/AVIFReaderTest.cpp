#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <string_view>

#include "codecs/ImageSource.h"
#include "support/AVIFBuilder.h"
#include "support/BoxBuilder.h"
#include "support/BoxPatches.h"
#include "support/JPEGBuilder.h"
#include "support/TestImages.h"
#include "support/TestProfiles.h"

namespace orvane {
namespace {

using test::AVIFRecipe;
using test::Pixel;

std::unique_ptr<ImageSource> open(ByteView file) {
  if (!avifReader.recognises(file)) throw UnreadableImage("not recognised");
  return avifReader.open(file);
}

Image decode(ByteView file) { return open(file)->image(); }

/// A value of fewer bits in 16 bits; both ranges are full.
double in16Bits(std::size_t coded, std::size_t top) {
  return static_cast<double>(coded) * 65535 / static_cast<double>(top);
}

/// A 16-bit ramp through every value up to `top`.
Image deepRamp(std::size_t top, AlphaKind alpha) {
  return test::drawImage(
      64, (top + 1) / 64, ChannelLayout::rgba, alpha, 16, ColorSpace::sRGB(),
      [&](std::size_t x, std::size_t y) -> Pixel {
        const auto shade = static_cast<std::uint16_t>(std::lround(in16Bits(y * 64 + x, top)));
        const auto other = static_cast<std::uint16_t>(65535 - shade);
        return {shade, other, shade, alpha == AlphaKind::none ? std::uint16_t{65535} : shade};
      });
}

TEST(AVIFReader, keepsAnOpaquePictureOf8BitsAsRGBAWithoutAlpha) {
  const Image picture = test::patchImage(33, 21, ColorSpace::sRGB());
  const auto source = open(test::buildAVIF(picture));
  EXPECT_EQ(source->typeIdentifier(), "public.avif");
  EXPECT_EQ(source->frameCount(), 1u);
  EXPECT_EQ(source->orientation(), 1);
}

TEST(AVIFReader, decodesLosslessPicturesExactly) {
  const Image picture = test::noisyImage(33, 21);
  const Bytes file = test::buildAVIF(picture);
  const Image image = decode(file);
  EXPECT_TRUE(isOpaqueRendering(image));
  EXPECT_TRUE(image.colorSpace->isSRGB());
  EXPECT_EQ(test::maximumDifference(image, picture), 0);
}

TEST(AVIFReader, decodesTwiceTheSame) {
  const Bytes file =
      test::buildAVIFSequence({test::gradientImage(16, 16), test::noisyImage(16, 16)});
  const auto source = open(file);
  const Image first = source->image();
  EXPECT_EQ(test::maximumDifference(source->image(), first), 0);
}

TEST(AVIFReader, decodesEverySubsamplingAndRange) {
  const Image patches = test::patchImage(48, 32, ColorSpace::sRGB());
  for (const auto format :
       {AVIF_PIXEL_FORMAT_YUV444, AVIF_PIXEL_FORMAT_YUV422, AVIF_PIXEL_FORMAT_YUV420}) {
    for (const auto range : {AVIF_RANGE_FULL, AVIF_RANGE_LIMITED}) {
      for (const avifMatrixCoefficients matrix :
           {AVIF_MATRIX_COEFFICIENTS_BT601, AVIF_MATRIX_COEFFICIENTS_BT709}) {
        const Image image =
            decode(test::buildAVIF(patches, {.format = format, .range = range, .matrix = matrix}));
        // The middles of the patches: chroma is mixed at their borders.
        for (const std::size_t x : {8u, 24u, 40u}) {
          for (const std::size_t y : {8u, 24u}) {
            const Pixel got = test::pixelAt(image, x, y), want = test::pixelAt(patches, x, y);
            for (std::size_t c = 0; c < 4; ++c) {
              EXPECT_NEAR(got[c], want[c], 2) << format << range << matrix << " " << x << "," << y;
            }
          }
        }
      }
    }
  }
}

TEST(AVIFReader, decodesMonochromePicturesAsRGBInFullRange) {
  const Image ramp = test::drawImage(52, 5, ChannelLayout::rgba, AlphaKind::none, 8,
                                     ColorSpace::sRGB(), [](std::size_t x, std::size_t) -> Pixel {
                                       const auto shade = static_cast<std::uint16_t>(x * 5);
                                       return {shade, shade, shade, 255};
                                     });
  for (const auto range : {AVIF_RANGE_FULL, AVIF_RANGE_LIMITED}) {
    const Image image = decode(test::buildAVIF(ramp, {.format = AVIF_PIXEL_FORMAT_YUV400,
                                                      .range = range,
                                                      .matrix = AVIF_MATRIX_COEFFICIENTS_BT601}));
    EXPECT_TRUE(isOpaqueRendering(image));
    EXPECT_LE(test::maximumDifference(image, ramp), range == AVIF_RANGE_FULL ? 0 : 1);
  }
}

TEST(AVIFReader, keepsMonochromeWithAGrayProfileGray) {
  const AVIFRecipe recipe{.format = AVIF_PIXEL_FORMAT_YUV400,
                          .matrix = AVIF_MATRIX_COEFFICIENTS_BT601,
                          .icc = test::grayGamma22Profile()};
  const auto shades = [](AlphaKind alpha) {
    return test::drawImage(9, 7, ChannelLayout::rgba, alpha, 8, ColorSpace::sRGB(),
                           [](std::size_t x, std::size_t y) -> Pixel {
                             const auto shade = static_cast<std::uint16_t>(x * 20 + y);
                             return {shade, shade, shade, static_cast<std::uint16_t>(255 - y)};
                           });
  };
  const Image opaque = decode(test::buildAVIF(shades(AlphaKind::none), recipe));
  EXPECT_EQ(opaque.layout, ChannelLayout::gray);
  EXPECT_EQ(opaque.colorSpace->model(), ColorSpace::Model::gray);
  EXPECT_TRUE(std::ranges::equal(opaque.colorSpace->iccData(), recipe.icc));
  EXPECT_EQ(test::pixelAt(opaque, 8, 6)[0], 166);

  const Image translucent = decode(test::buildAVIF(shades(AlphaKind::straight), recipe));
  EXPECT_EQ(translucent.layout, ChannelLayout::grayAlpha);
  EXPECT_EQ(translucent.alpha, AlphaKind::straight);
  EXPECT_EQ(test::pixelAt(translucent, 8, 6)[0], 166);
  EXPECT_EQ(test::pixelAt(translucent, 8, 6)[1], 249);
}

TEST(AVIFReader, scales10And12BitsTo16RoundedToNearest) {
  for (const std::uint32_t depth : {10u, 12u}) {
    for (const AlphaKind alpha : {AlphaKind::none, AlphaKind::straight}) {
      const std::size_t top = (std::size_t{1} << depth) - 1;
      const Image image = decode(test::buildAVIF(deepRamp(top, alpha), {.depth = depth}));
      ASSERT_EQ(image.bitsPerComponent, 16);
      EXPECT_EQ(image.alpha, alpha);
      for (std::size_t coded = 0; coded <= top; ++coded) {
        const Pixel pixel = test::pixelAt(image, coded % 64, coded / 64);
        // To the nearest, but for ties in single precision.
        ASSERT_NEAR(pixel[0], in16Bits(coded, top), 0.51);
        ASSERT_NEAR(pixel[1], in16Bits(top - coded, top), 0.51);
        ASSERT_NEAR(pixel[3], alpha == AlphaKind::none ? 65535 : in16Bits(coded, top), 0.51);
      }
    }
  }
}

TEST(AVIFReader, keepsStraightAlphaAndTheColoursBelowIt) {
  const Image picture = test::alphaGradientImage(40, 12);
  const Image image = decode(test::buildAVIF(picture));
  EXPECT_EQ(image.layout, ChannelLayout::rgba);
  EXPECT_EQ(image.alpha, AlphaKind::straight);
  EXPECT_EQ(test::maximumDifference(image, picture), 0);
}

TEST(AVIFReader, takesPremultipliedAlphaAsSuch) {
  const Image picture =
      test::drawImage(20, 10, ChannelLayout::rgba, AlphaKind::premultiplied, 8, ColorSpace::sRGB(),
                      [](std::size_t x, std::size_t) -> Pixel {
                        const auto value = static_cast<std::uint16_t>(x * 13);
                        return {value, static_cast<std::uint16_t>(value / 2), 0, value};
                      });
  const Image image = decode(test::buildAVIF(picture, {.isPremultiplied = true}));
  EXPECT_EQ(image.alpha, AlphaKind::premultiplied);
  EXPECT_EQ(test::maximumDifference(image, picture), 0);
}

/// The EXIF number (CIPA DC-008, tag 0x112) of a stored picture with the corners "ABCD" (top left,
/// top right, bottom left, bottom right) that is to be shown with these.
int exifNumber(std::string_view shown) {
  constexpr std::array<std::string_view, 8> shownAs{"ABCD", "BADC", "DCBA", "CDAB",
                                                    "ACBD", "CADB", "DBCA", "BDAC"};
  return static_cast<int>(std::ranges::find(shownAs, shown) - shownAs.begin()) + 1;
}

TEST(AVIFReader, reportsEveryRotationAndMirrorImageAsItsEXIFNumber) {
  const Image picture = test::gradientImage(24, 16);
  for (std::uint8_t turns = 0; turns < 4; ++turns) {
    for (int axis = -1; axis < 2; ++axis) {
      AVIFRecipe recipe{.quarterTurns = turns};
      if (axis >= 0) recipe.mirrorAxis = static_cast<std::uint8_t>(axis);
      std::string corners = "ABCD";
      for (int turn = 0; turn < turns; ++turn) {  // anti-clockwise
        corners = {corners[1], corners[3], corners[0], corners[2]};
      }
      if (axis == 0) corners = {corners[2], corners[3], corners[0], corners[1]};
      if (axis == 1) corners = {corners[1], corners[0], corners[3], corners[2]};
      const auto file = test::buildAVIF(picture, recipe);
      const auto source = open(file);
      EXPECT_EQ(source->orientation(), exifNumber(corners)) << int{turns} << " " << axis;
      EXPECT_EQ(test::maximumDifference(source->image(), picture), 0)
          << "stored pixels stay as they are";
    }
  }
}

TEST(AVIFReader, ignoresTheOrientationInEXIF) {
  const Bytes file = test::buildAVIF(test::gradientImage(24, 16), {.exif = test::exifBlock(6)});
  EXPECT_EQ(open(file)->orientation(), 1);
}

avifCleanApertureBox crop(std::int32_t width, std::int32_t height, std::int32_t right,
                          std::int32_t down, std::int32_t offsetDenominator = 1) {
  const auto stored = [](std::int32_t number) { return static_cast<std::uint32_t>(number); };
  return {stored(width),  1,
          stored(height), 1,
          stored(right),  stored(offsetDenominator),
          stored(down),   stored(offsetDenominator)};
}

TEST(AVIFReader, appliesTheCleanAperture) {
  const Image picture = test::gradientImage(24, 16);
  struct Case {
    avifCleanApertureBox box;
    std::size_t left, top, width, height;
  };
  for (const Case& c : {Case{crop(24, 16, 0, 0), 0, 0, 24, 16},   // all of it
                        Case{crop(10, 6, -7, 5), 0, 10, 10, 6},   // lower left corner
                        Case{crop(5, 3, 1, -1, 2), 10, 6, 5, 3},  // half a pixel off the middle
                        Case{crop(1, 1, 23, -15, 2), 23, 0, 1, 1}}) {  // the last of the first row
    for (const AlphaKind alpha : {AlphaKind::none, AlphaKind::straight}) {
      Image whole = picture;
      whole.alpha = alpha;
      const Image image = decode(test::buildAVIF(whole, {.crop = c.box}));
      ASSERT_EQ(image.width, c.width);
      ASSERT_EQ(image.height, c.height);
      for (const std::size_t y : {std::size_t{0}, c.height - 1}) {
        for (const std::size_t x : {std::size_t{0}, c.width - 1}) {
          EXPECT_EQ(test::pixelAt(image, x, y), test::pixelAt(picture, c.left + x, c.top + y));
        }
      }
    }
  }
}

TEST(AVIFReader, movesACropBetweenTwoPixelsToTheFirst) {
  const Image picture = test::gradientImage(24, 16);
  const Image image = decode(test::buildAVIF(picture, {.crop = crop(5, 16, 0, 0)}));
  EXPECT_EQ(image.width, 5u);
  EXPECT_EQ(test::pixelAt(image, 0, 0), test::pixelAt(picture, 9, 0));
}

TEST(AVIFReader, refusesACropThatReachesOutOfThePicture) {
  const Bytes file = test::buildAVIF(test::gradientImage(24, 16), {.crop = crop(10, 6, 0, 0)});
  const std::size_t box = test::codeIn(file, "clap") + 4;
  const auto damaged = [&](std::size_t index, std::uint32_t value) {
    Bytes copy = file;
    test::put32(copy, box + index * 4, value);
    return copy;
  };
  EXPECT_NO_THROW(decode(damaged(4, 7)));
  EXPECT_THROW(decode(damaged(4, 8)), UnreadableImage);           // past the right side
  EXPECT_THROW(decode(damaged(4, 0x80000000)), UnreadableImage);  // far left of it
  EXPECT_THROW(decode(damaged(0, 25)), UnreadableImage);
  EXPECT_THROW(decode(damaged(0, 0)), UnreadableImage);
  EXPECT_THROW(decode(damaged(0, 0xFFFFFFFF)), UnreadableImage);  // negative
  EXPECT_THROW(decode(damaged(1, 0)), UnreadableImage);           // divided by zero
  EXPECT_THROW(decode(damaged(5, 0)), UnreadableImage);
  EXPECT_THROW(decode(damaged(1, 11)), UnreadableImage);  // less than a pixel
}

TEST(AVIFReader, addsTheTransformationsOfIdentityDerivationsToThoseOfTheNamedItem) {
  const Image picture = test::gradientImage(24, 16);
  const Bytes plain = test::withIdentity(test::buildAVIF(picture), 100, {});
  EXPECT_EQ(test::maximumDifference(decode(plain), picture), 0);
  const Bytes item =
      test::buildAVIF(picture, {.quarterTurns = std::uint8_t{3}, .crop = crop(20, 10, 0, 0)});
  const Bytes file = test::withIdentity(
      item, 100, {test::ispe(10, 20), test::irot(1), test::clap(6, 4), test::imir(1)});
  const auto source = open(file);
  EXPECT_EQ(source->orientation(), 2);
  const Image image = source->image();
  ASSERT_EQ(image.width, 6u);
  ASSERT_EQ(image.height, 4u);
  EXPECT_EQ(test::pixelAt(image, 0, 0), test::pixelAt(picture, 2 + 7, 3 + 3));
}

TEST(AVIFReader, keepsWhatBelongsToAnIdentityDerivation) {
  Image picture = test::alphaGradientImage(24, 16);
  picture.alpha = AlphaKind::premultiplied;
  const Bytes file =
      test::buildAVIF(picture, {.isPremultiplied = true, .exif = test::exifBlock(6)});
  const auto item = static_cast<std::uint16_t>(test::primaryItem(file));
  const Image image = decode(test::withIdentity(
      test::withReferencesTo(file, item, 100, {"auxl", "prem", "cdsc"}), 100, {}));
  EXPECT_EQ(image.alpha, AlphaKind::premultiplied);
  EXPECT_EQ(test::maximumDifference(image, picture), 0);
}

TEST(AVIFReader, refusesItemsThatReferToThemselves) {
  const Bytes file = test::buildAVIF(test::gradientImage(24, 16));
  const std::uint32_t item = test::primaryItem(file);
  EXPECT_THROW(open(test::withItems(file, {.references = {test::reference("dimg", item, {item})}})),
               UnreadableImage);
}

TEST(AVIFReader, takesTheColourSpaceFromTheCodePoints) {
  const Image picture = test::patchImage(24, 16, ColorSpace::sRGB());
  const auto spaceOf = [&](CodePoints codePoints) {
    return decode(test::buildAVIF(picture, {.codePoints = codePoints})).colorSpace;
  };
  EXPECT_EQ(spaceOf(displayP3CodePoints)->codePoints(), displayP3CodePoints);
  EXPECT_EQ(spaceOf({9, 16})->codePoints(), (CodePoints{9, 16}));
  EXPECT_TRUE(spaceOf(sRGBCodePoints)->isSRGB());
  EXPECT_TRUE(spaceOf({2, 2})->isSRGB());
}

TEST(AVIFReader, prefersTheProfileToTheCodePoints) {
  const Image picture = test::patchImage(24, 16, ColorSpace::sRGB());
  const Bytes profile = test::adobeRGBProfile();
  const Image image =
      decode(test::buildAVIF(picture, {.codePoints = displayP3CodePoints, .icc = profile}));
  EXPECT_TRUE(std::ranges::equal(image.colorSpace->iccData(), profile));
  EXPECT_TRUE(
      decode(test::buildAVIF(picture, {.icc = test::otherMakeSRGBProfile()})).colorSpace->isSRGB());
}

TEST(AVIFReader, putsGridsTogether) {
  const Image left = test::gradientImage(64, 64), right = test::noisyImage(64, 64);
  const Bytes file = test::buildAVIFGrid({left, right}, 2);
  const auto source = open(file);
  EXPECT_EQ(source->frameCount(), 1u);
  const Image image = source->image();
  ASSERT_EQ(image.width, 128u);
  EXPECT_EQ(test::pixelAt(image, 10, 50), test::pixelAt(left, 10, 50));
  EXPECT_EQ(test::pixelAt(image, 74, 50), test::pixelAt(right, 10, 50));
}

TEST(AVIFReader, readsTheFirstPictureOfASequence) {
  const Image first = test::noisyImage(16, 16);
  const Bytes file = test::buildAVIFSequence({first, test::gradientImage(16, 16), first});
  const auto source = open(file);
  EXPECT_EQ(source->frameCount(), 3u);
  EXPECT_EQ(source->typeIdentifier(), "public.avif");
  EXPECT_EQ(test::maximumDifference(source->image(), first), 0);
}

TEST(AVIFReader, knowsThePictureByItsCodingNotByTheMajorBrand) {
  const Image picture = test::noisyImage(16, 16);
  Bytes file = test::buildAVIF(picture);
  for (const std::string_view brand : {"mif1", "heic"}) {
    std::ranges::copy(brand, file.begin() + 8);
    EXPECT_EQ(test::maximumDifference(decode(file), picture), 0) << brand;
  }
  std::ranges::copy(std::string_view("avif"), file.begin() + 8);
  EXPECT_FALSE(avifReader.recognises(test::withCode(file, "av01", "hvc1")));
  EXPECT_FALSE(avifReader.recognises({}));
}

TEST(AVIFReader, refusesEveryTruncation) {
  for (const Bytes& file :
       {test::buildAVIF(test::alphaGradientImage(24, 16)),
        test::buildAVIFSequence({test::noisyImage(16, 16), test::noisyImage(16, 16)})}) {
    // All of a still's bytes and the first frame of a sequence are needed.
    const std::size_t needed = file.size() - (file[11] == 's' ? file.size() / 4 : 1);
    for (std::size_t size = 0; size <= needed; size += size < 64 ? 1 : 7) {
      EXPECT_THROW(decode(ByteView(file).first(size)), UnreadableImage) << size;
    }
  }
}

TEST(AVIFReader, checksTheLimitsBeforeItDecodes) {
  const Bytes file = test::buildAVIF(test::noisyImage(24, 16));
  EXPECT_THROW(open(test::withSize(file, 1'000'001, 1)), UnreadableImage);
  EXPECT_THROW(open(test::withSize(file, 100'000, 100'000)), UnreadableImage);
  EXPECT_THROW(open(test::withSize(file, 0, 16)), UnreadableImage);
  EXPECT_THROW(open(test::withSize(file, 0xFFFFFFFF, 0xFFFFFFFF)), UnreadableImage);
}

TEST(AVIFReader, survivesDamagedBytes) {
  const Bytes file = test::buildAVIF(test::alphaGradientImage(24, 16), {.quarterTurns = 1});
  std::size_t decoded = 0, refused = 0;
  for (std::size_t at = 0; at < file.size(); ++at) {
    Bytes damaged = file;
    damaged[at] ^= 0x55;
    try {
      decoded += decode(damaged).height > 0;
    } catch (const UnreadableImage&) {
      ++refused;
    }
  }
  EXPECT_EQ(decoded + refused, file.size());
  EXPECT_GT(refused, 100u);
}

}  // namespace
}  // namespace orvane
