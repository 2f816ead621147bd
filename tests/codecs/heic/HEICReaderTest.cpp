#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <string_view>

#include "codecs/ImageSource.h"
#include "pipeline/ImageDecoder.h"
#include "support/BoxBuilder.h"
#include "support/BoxPatches.h"
#include "support/HEICBuilder.h"
#include "support/JPEGBuilder.h"
#include "support/TestImages.h"
#include "support/TestProfiles.h"

namespace orvane {
namespace {

using test::HEICRecipe;
using test::Pixel;

std::unique_ptr<ImageSource> open(ByteView file) {
  if (!heicReader.recognises(file)) throw UnreadableImage("not recognised");
  return heicReader.open(file);
}

Image decode(ByteView file) { return open(file)->image(); }

/// A picture that is as hard to code as a photograph, coded with every tool that x265 has.
Bytes photograph() {
  return test::buildHEIC(test::noisyImage(256, 192),
                         {.chroma = heif_chroma_420,
                          .matrix = heif_matrix_coefficients_ITU_R_BT_601_6,
                          .isLossless = false});
}

class HEICReader : public testing::Test {
 protected:
  void SetUp() override { ORVANE_REQUIRE_HEIC_BUILDER(); }
};

TEST_F(HEICReader, decodesAnOpaquePictureOf8BitsExactly) {
  const Image picture = test::noisyImage(96, 64);
  const Bytes file = test::buildHEIC(picture);
  const auto source = open(file);
  EXPECT_EQ(source->typeIdentifier(), "public.heic");
  EXPECT_EQ(source->frameCount(), 1u);
  EXPECT_EQ(source->orientation(), 1);
  const Image image = source->image();
  EXPECT_TRUE(isOpaqueRendering(image));
  EXPECT_TRUE(image.colorSpace->isSRGB());
  ASSERT_EQ(image.width, 96u);
  ASSERT_EQ(image.height, 64u);
  EXPECT_EQ(test::maximumDifference(image, picture), 0);
  EXPECT_EQ(test::maximumDifference(source->image(), picture), 0) << "the second time";
}

TEST_F(HEICReader, decodesWhatLibheifDecodes) {
  const Bytes file = photograph();
  // Versions of libheif round their conversion to RGB differently.
  EXPECT_LE(test::maximumDifference(decode(file), test::decodeWithLibheif(file)), 1);
}

TEST_F(HEICReader, decodesEverySubsamplingAndRange) {
  const Image patches = test::patchImage(96, 64, ColorSpace::sRGB());
  for (const heif_chroma chroma : {heif_chroma_420, heif_chroma_422, heif_chroma_444}) {
    for (const heif_matrix_coefficients matrix :
         {heif_matrix_coefficients_ITU_R_BT_601_6, heif_matrix_coefficients_ITU_R_BT_709_5}) {
      for (const bool isFullRange : {true, false}) {
        const Image image = decode(test::buildHEIC(
            patches, {.chroma = chroma, .matrix = matrix, .isFullRange = isFullRange}));
        for (const std::size_t x : {16u, 48u, 80u}) {
          for (const std::size_t y : {16u, 48u}) {
            const Pixel got = test::pixelAt(image, x, y), want = test::pixelAt(patches, x, y);
            for (std::size_t c = 0; c < 4; ++c) {
              EXPECT_NEAR(got[c], want[c], 3) << chroma << matrix << isFullRange << x << "," << y;
            }
          }
        }
      }
    }
  }
}

TEST_F(HEICReader, widensDeepPicturesToFullRange) {
  const Image ramp =
      test::drawImage(64, 64, ChannelLayout::rgba, AlphaKind::none, 16, ColorSpace::sRGB(),
                      [](std::size_t x, std::size_t y) -> Pixel {
                        const auto shade = static_cast<std::uint16_t>(
                            std::lround(static_cast<double>((y * 64 + x) / 4) * 65535 / 1023));
                        return {shade, static_cast<std::uint16_t>(65535 - shade), shade, 65535};
                      });
  const Image image = decode(test::buildHEIC(ramp, {.depth = 10}));
  EXPECT_EQ(image.bitsPerComponent, 16);
  EXPECT_EQ(image.alpha, AlphaKind::none);
  EXPECT_EQ(test::maximumDifference(image, ramp), 0);
}

TEST_F(HEICReader, keepsAlphaAsItIsStored) {
  for (const AlphaKind alpha : {AlphaKind::straight, AlphaKind::premultiplied}) {
    for (const int depth : {8, 10}) {
      Image picture = test::alphaGradientImage(64, 64);
      picture.alpha = alpha;
      const Image image = decode(test::buildHEIC(picture, {.depth = depth}));
      EXPECT_EQ(image.alpha, alpha);
      EXPECT_EQ(image.bitsPerComponent, depth == 8 ? 8 : 16);
      const double scale = depth == 8 ? 1 : 257;
      for (const std::size_t x : {0u, 1u, 20u, 62u, 63u}) {
        for (std::size_t c = 0; c < 4; ++c) {
          EXPECT_NEAR(test::pixelAt(image, x, 30)[c] / scale, test::pixelAt(picture, x, 30)[c], 0.2)
              << x << " channel " << c;
        }
      }
    }
  }
}

TEST_F(HEICReader, readsMonochromePictures) {
  const Image picture = test::gradientImage(64, 64);
  for (const int depth : {8, 10}) {
    const Image image = decode(test::buildHEIC(picture, {.depth = depth, .isMonochrome = true}));
    const int scale = depth == 8 ? 1 : 257;
    for (const std::size_t x : {0u, 31u, 63u}) {
      const Pixel got = test::pixelAt(image, x, 40);
      EXPECT_NEAR(got[0], test::pixelAt(picture, x, 40)[0] * scale, scale);
      EXPECT_EQ(got[0], got[1]);
      EXPECT_EQ(got[0], got[2]);
    }
  }
}

TEST_F(HEICReader, takesTheColourSpaceFromCodePoints) {
  const Image picture = test::patchImage(64, 64, ColorSpace::sRGB());
  const Image image = decode(test::buildHEIC(picture, {.codePoints = displayP3CodePoints}));
  EXPECT_EQ(image.colorSpace->codePoints(), displayP3CodePoints);
  EXPECT_FALSE(image.colorSpace->isSRGB());
}

TEST_F(HEICReader, takesTheColourSpaceFromAProfile) {
  const Image picture = test::patchImage(64, 64, ColorSpace::sRGB());
  const Bytes profile = test::adobeRGBProfile();
  const Image image = decode(test::buildHEIC(picture, {.icc = profile}));
  EXPECT_TRUE(std::ranges::equal(image.colorSpace->iccData(), profile));
  EXPECT_TRUE(
      decode(test::buildHEIC(picture, {.icc = test::otherMakeSRGBProfile()})).colorSpace->isSRGB());
}

TEST_F(HEICReader, isGreyWithAGreyProfile) {
  const Image picture = test::gradientImage(64, 64);
  const Bytes profile = test::grayGamma22Profile();
  const Image image = decode(test::buildHEIC(picture, {.isMonochrome = true, .icc = profile}));
  EXPECT_EQ(image.layout, ChannelLayout::gray);
  EXPECT_TRUE(std::ranges::equal(image.colorSpace->iccData(), profile));
  EXPECT_EQ(test::pixelAt(image, 50, 40)[0], test::pixelAt(picture, 50, 40)[0]);
}

TEST_F(HEICReader, isSRGBWithoutAnySignalling) {
  const Image picture = test::patchImage(64, 64, ColorSpace::sRGB());
  EXPECT_TRUE(decode(test::buildHEIC(picture, {.matrix = heif_matrix_coefficients_ITU_R_BT_601_6,
                                               .codePoints = std::nullopt}))
                  .colorSpace->isSRGB());
}

TEST_F(HEICReader, turnsThePictureUpright) {
  // Upper left, upper right, lower left, lower right.
  const std::array<Pixel, 4> stored{
      {{200, 0, 0, 255}, {0, 200, 0, 255}, {0, 0, 200, 255}, {200, 200, 0, 255}}};
  const Image picture = test::drawImage(64, 96, ChannelLayout::rgba, AlphaKind::none, 8,
                                        ColorSpace::sRGB(), [&](std::size_t x, std::size_t y) {
                                          return stored[(x < 32 ? 0U : 1U) + (y < 48 ? 0U : 2U)];
                                        });
  constexpr std::array<std::array<std::size_t, 4>, 9> shown{{{},
                                                             {0, 1, 2, 3},
                                                             {1, 0, 3, 2},
                                                             {3, 2, 1, 0},
                                                             {2, 3, 0, 1},
                                                             {0, 2, 1, 3},
                                                             {2, 0, 3, 1},
                                                             {3, 1, 2, 0},
                                                             {1, 3, 0, 2}}};
  for (std::size_t orientation = 1; orientation <= 8; ++orientation) {
    const Bytes file =
        test::buildHEIC(picture, {.orientation = static_cast<heif_orientation>(orientation)});
    const auto source = open(file);
    EXPECT_EQ(source->orientation(), 1);
    const Image image = source->image();
    ASSERT_EQ(image.width, orientation <= 4 ? 64u : 96u) << orientation;
    ASSERT_EQ(image.height, orientation <= 4 ? 96u : 64u) << orientation;
    for (std::size_t corner = 0; corner < 4; ++corner) {
      const Pixel got = test::pixelAt(image, corner % 2 == 0 ? 4 : image.width - 5,
                                      corner < 2 ? 4 : image.height - 5);
      EXPECT_EQ(got, stored[shown[orientation][corner]]) << orientation << " corner " << corner;
    }
  }
}

TEST_F(HEICReader, ignoresTheOrientationInEXIF) {
  const Bytes file =
      test::buildHEIC(test::patchImage(64, 96, ColorSpace::sRGB()), {.exif = test::exifBlock(6)});
  const auto source = open(file);
  EXPECT_EQ(source->orientation(), 1);
  EXPECT_EQ(source->image().width, 64u);
}

TEST_F(HEICReader, cropsOddSizes) {
  for (const auto& [width, height] : {std::pair<std::size_t, std::size_t>{65, 97}, {17, 9}}) {
    const Image picture = test::gradientImage(width, height);
    const Image image = decode(test::buildHEIC(picture));
    ASSERT_EQ(image.width, width);
    ASSERT_EQ(image.height, height);
    EXPECT_EQ(test::maximumDifference(image, picture), 0);
  }
}

TEST_F(HEICReader, showsThePrimaryOfSeveralPictures) {
  const Image first = test::gradientImage(64, 64);
  const Bytes file = test::buildHEIC({first, test::noisyImage(96, 64)});
  const auto source = open(file);
  EXPECT_EQ(source->frameCount(), 2u);
  EXPECT_EQ(test::maximumDifference(source->image(), first), 0);
}

/// The picture that is shown, upright.
Image shown(ByteView file) {
  const auto source = open(file);
  const Image image = source->image();
  return ImageDecoder::applyOrientation(source->orientation(), image).value_or(image);
}

TEST_F(HEICReader, showsTheItemThatAnIdentityDerivationNames) {
  const Image picture = test::noisyImage(96, 64);
  const Bytes item = test::buildHEIC(picture);
  EXPECT_EQ(test::maximumDifference(shown(test::withIdentity(item, 100, {})), picture), 0);
  const Bytes beside = test::withItems(
      item, {.added = {{100, "iden", {}}},
             .references = {test::reference("dimg", 100, {test::primaryItem(item)})}});
  EXPECT_EQ(test::maximumDifference(shown(beside), picture), 0) << "not as the primary item";
}

TEST_F(HEICReader, addsTheTransformationsOfIdentityDerivationsToThoseOfTheNamedItem) {
  const Image picture = test::noisyImage(96, 64);
  // The item turns clockwise, the first derivation back and crops, the second crops and mirrors.
  const Bytes item = test::buildHEIC(picture, {.orientation = heif_orientation_rotate_90_cw});
  const Bytes first =
      test::withIdentity(item, 100, {test::ispe(64, 96), test::irot(1), test::clap(80, 50, -4, 2)});
  const Bytes second =
      test::withIdentity(first, 101, {test::ispe(80, 50), test::clap(30, 20), test::imir(1)});
  ASSERT_EQ(shown(first).width, 80u);
  ASSERT_EQ(shown(first).height, 50u);
  EXPECT_EQ(test::pixelAt(shown(first), 0, 0), test::pixelAt(picture, 6, 8));
  const Image image = shown(second);
  ASSERT_EQ(image.width, 30u);
  ASSERT_EQ(image.height, 20u);
  EXPECT_EQ(test::pixelAt(image, 0, 0), test::pixelAt(picture, 6 + 25 + 29, 8 + 15));
  EXPECT_EQ(test::pixelAt(image, 29, 19), test::pixelAt(picture, 6 + 25, 8 + 15 + 19));
}

TEST_F(HEICReader, keepsWhatBelongsToAnIdentityDerivation) {
  Image picture = test::alphaGradientImage(64, 64);
  picture.alpha = AlphaKind::premultiplied;
  const Bytes file = test::buildHEIC(picture, {.exif = test::exifBlock(6)});
  const auto item = static_cast<std::uint16_t>(test::primaryItem(file));
  const Image image = decode(test::withIdentity(
      test::withReferencesTo(file, item, 100, {"auxl", "prem", "cdsc"}), 100, {}));
  EXPECT_EQ(image.alpha, AlphaKind::premultiplied);
  EXPECT_EQ(test::maximumDifference(image, decode(file)), 0);
}

TEST_F(HEICReader, readsAnIdentityDerivationThatHasAThumbnail) {
  const Image picture = test::noisyImage(96, 64);
  const Bytes file = test::buildHEIC({picture, test::gradientImage(48, 32)});
  const std::uint32_t item = test::primaryItem(file);
  const Bytes identity =
      test::withItems(file, {.added = {{100, "iden", {}}},
                             .references = {test::reference("dimg", 100, {item}),
                                            test::reference("thmb", item + 1, {100})},
                             .primary = 100});
  EXPECT_EQ(test::maximumDifference(decode(identity), picture), 0);
}

TEST_F(HEICReader, refusesACropOfAnIdentityDerivationThatReachesOutOfThePicture) {
  const Bytes file = test::buildHEIC(test::noisyImage(96, 64));
  EXPECT_THROW(open(test::withIdentity(file, 100, {test::clap(97, 64)})), UnreadableImage);
}

TEST_F(HEICReader, refusesItemsThatReferToEachOtherInACircle) {
  const Bytes file = test::buildHEIC(test::gradientImage(64, 64));
  const std::uint32_t item = test::primaryItem(file);
  for (const char* type : {"dimg", "auxl", "thmb"}) {
    EXPECT_THROW(open(test::withItems(file, {.references = {test::reference(type, item, {item})}})),
                 UnreadableImage)
        << type;
  }
  EXPECT_THROW(open(test::withItems(file, {.added = {{100, "iden", {}}, {101, "iden", {}}},
                                           .references = {test::reference("dimg", 100, {101}),
                                                          test::reference("dimg", 101, {100})}})),
               UnreadableImage);
}

/// A file whose primary item is a grid, 128 × 64, of these two items.
Bytes withGrid(const Bytes& file, std::uint32_t grid, std::uint32_t left, std::uint32_t right) {
  return test::withItems(
      file, {.added = {{grid, "grid", {test::ispe(128, 64)}, test::gridData(2, 1, 128, 64)}},
             .references = {test::reference("dimg", grid, {left, right})},
             .primary = grid});
}

TEST_F(HEICReader, putsGridsTogether) {
  const Image left = test::gradientImage(64, 64), right = test::noisyImage(64, 64);
  const Bytes file = test::buildHEIC({left, right});
  const std::uint32_t item = test::primaryItem(file);
  const Bytes grid = withGrid(file, 100, item, item + 1);
  const Image image = decode(grid);
  ASSERT_EQ(image.width, 128u);
  EXPECT_EQ(test::pixelAt(image, 6, 10), test::pixelAt(left, 6, 10));
  EXPECT_EQ(test::pixelAt(image, 70, 10), test::pixelAt(right, 6, 10));

  const Image turned = shown(test::withIdentity(grid, 101, {test::irot(2)}));
  ASSERT_EQ(turned.width, 128u);
  EXPECT_EQ(test::pixelAt(turned, 127 - 70, 63 - 10), test::pixelAt(right, 6, 10));
}

TEST_F(HEICReader, refusesAGridThatIsItsOwnTile) {
  const Bytes file = test::buildHEIC(test::gradientImage(64, 64));
  // libheif 1.15 follows it until no stack is left.
  EXPECT_THROW(decode(withGrid(file, 100, test::primaryItem(file), 100)), UnreadableImage);
}

TEST_F(HEICReader, refusesItemsThatMultiplyDecodings) {
  Bytes file = test::buildHEIC(test::gradientImage(64, 64));
  const std::string isAlpha =
      test::fullBox("auxC", 0, std::string("urn:mpeg:mpegB:cicp:systems:auxiliary:alpha") + '\0');
  // A grid of the primary item, then grids whose picture and alpha both are the grid before.
  for (std::uint32_t item = 100; item < 124; ++item) {
    const std::uint32_t before = test::primaryItem(file);
    std::vector<std::string> references{test::reference("dimg", item, {before})};
    if (item > 100) references.push_back(test::reference("auxl", before, {item}));
    file = test::withItems(
        file,
        {.added = {{item, "grid", {test::ispe(64, 64), isAlpha}, test::gridData(1, 1, 64, 64)}},
         .references = references,
         .primary = item});
  }
  EXPECT_THROW(decode(file), UnreadableImage);
}

TEST_F(HEICReader, leavesOtherCodingsAndOverlaysAlone) {
  const Bytes file = test::buildHEIC(test::gradientImage(64, 64));
  EXPECT_TRUE(heicReader.recognises(file));
  for (const char* coding : {"av01", "avc1", "vvc1", "jpeg", "unci", "j2k1", "iovl"}) {
    EXPECT_FALSE(heicReader.recognises(test::withCode(file, "hvc1", coding))) << coding;
  }
  EXPECT_FALSE(heicReader.recognises({}));
}

TEST_F(HEICReader, refusesSizesPastTheLimits) {
  const Bytes file = test::buildHEIC(test::gradientImage(64, 64));
  EXPECT_THROW(open(test::withSize(file, 40'000, 40'000)), UnreadableImage);
  EXPECT_THROW(open(test::withSize(file, 1'000'001, 1)), UnreadableImage);
  EXPECT_THROW(open(test::withSize(file, 0, 64)), UnreadableImage);
}

TEST_F(HEICReader, refusesPicturesOfAnotherSizeThanTheHeaderSays) {
  EXPECT_THROW(decode(test::withSize(test::buildHEIC(test::gradientImage(64, 64)), 64, 80)),
               UnreadableImage);
}

TEST_F(HEICReader, refusesEveryTruncation) {
  const Bytes file = test::buildHEIC(test::noisyImage(64, 64));
  for (std::size_t size = 0; size < file.size(); size += 1 + size / 8) {
    EXPECT_THROW(decode(ByteView(file).first(size)), UnreadableImage) << size;
  }
  EXPECT_THROW(decode(ByteView(file).first(file.size() - 1)), UnreadableImage);
}

TEST_F(HEICReader, acceptsStrayBytesAtTheEnd) {
  Bytes file = test::buildHEIC(test::noisyImage(64, 64));
  file.insert(file.end(), {0, 0, 0, 12, 'f', 'r', 'e', 'e', 1, 2, 3, 4});
  EXPECT_EQ(decode(file).width, 64u);
}

TEST_F(HEICReader, refusesNearlyAllDamagedPictures) {
  const Bytes file = photograph();
  const std::size_t data = test::codeIn(file, "mdat") + 64;  // past the slice's header
  std::mt19937 random(7);
  int accepted = 0;
  for (int i = 0; i < 100; ++i) {
    Bytes damaged = file;
    damaged[data + random() % (file.size() - data)] ^=
        static_cast<std::uint8_t>(1U << random() % 8);
    try {
      decode(damaged);
      ++accepted;
    } catch (const UnreadableImage&) {
    }
  }
  // The rest decodes to other pixels of a whole picture: no decoder can tell.
  EXPECT_LT(accepted, 8);
}

TEST_F(HEICReader, survivesAnyDamageToTheHeader) {
  const Bytes file = test::buildHEIC(test::alphaGradientImage(65, 64));
  const std::size_t data = test::codeIn(file, "mdat");
  std::mt19937 random(11);
  for (int i = 0; i < 300; ++i) {
    Bytes damaged = file;
    damaged[random() % data] = static_cast<std::uint8_t>(random());
    try {
      decode(damaged);
    } catch (const UnreadableImage&) {
    }
  }
}

}  // namespace
}  // namespace orvane
