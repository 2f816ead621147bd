#include "platform/graphics/ColorSpace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/graphics/CodePointsProfile.h"
#include "support/TestProfiles.h"

namespace orvane {
namespace {

using Model = ColorSpace::Model;

Bytes copyOf(ByteView bytes) { return Bytes(bytes.begin(), bytes.end()); }

TEST(ColorSpace, knowsSRGBByNameAndByCodePoints) {
  EXPECT_EQ(ColorSpace::sRGB()->name(), ColorSpace::sRGBName);
  EXPECT_TRUE(ColorSpace::sRGB()->isSRGB());
  EXPECT_TRUE(ColorSpace::sRGB()->supportsOutput());
  EXPECT_EQ(ColorSpace::sRGB()->codePoints(), sRGBCodePoints);
}

TEST(ColorSpace, takesAProfileThatDoesWhatSRGBDoesForSRGBWhateverItsBytes) {
  EXPECT_EQ(ColorSpace::fromICC(test::otherMakeSRGBProfile(), Model::rgb), ColorSpace::sRGB());
  EXPECT_EQ(ColorSpace::fromICC(ColorSpace::sRGB()->iccData(), Model::rgb), ColorSpace::sRGB());
}

TEST(ColorSpace, keepsTheBytesOfEveryOtherProfile) {
  for (const Bytes& profile : {test::displayP3Profile(), test::adobeRGBProfile()}) {
    const ColorSpacePtr space = ColorSpace::fromICC(profile, Model::rgb);
    EXPECT_FALSE(space->isSRGB());
    EXPECT_FALSE(space->name().has_value());
    EXPECT_TRUE(space->supportsOutput());
    EXPECT_EQ(copyOf(space->iccData()), profile);
  }
}

TEST(ColorSpace, tellsTheCodePointsOfAProfileByWhatItDoes) {
  EXPECT_EQ(ColorSpace::fromICC(test::displayP3Profile(), Model::rgb)->codePoints(),
            displayP3CodePoints);
  EXPECT_EQ(ColorSpace::fromICC(test::adobeRGBProfile(), Model::rgb)->codePoints(), std::nullopt);
}

TEST(ColorSpace, fallsBackToTheStandardSpaceForProfilesThatCannotBeUsed) {
  const Bytes p3 = test::displayP3Profile();
  Bytes cut(p3.begin(), p3.begin() + 200);
  Bytes damaged = p3;
  std::fill(damaged.begin() + 128, damaged.end(), std::uint8_t{0xFF});
  EXPECT_EQ(ColorSpace::fromICC({}, Model::rgb), ColorSpace::sRGB());
  EXPECT_EQ(ColorSpace::fromICC(cut, Model::rgb), ColorSpace::sRGB());
  EXPECT_EQ(ColorSpace::fromICC(damaged, Model::rgb), ColorSpace::sRGB());
}

TEST(ColorSpace, ignoresAProfileOfAnotherModelThanThePicture) {
  EXPECT_EQ(ColorSpace::fromICC(test::grayGamma22Profile(), Model::rgb), ColorSpace::sRGB());
  EXPECT_EQ(ColorSpace::fromICC(test::displayP3Profile(), Model::gray),
            ColorSpace::standard(Model::gray));
  EXPECT_EQ(ColorSpace::fromICC(test::displayP3Profile(), Model::cmyk),
            ColorSpace::standard(Model::cmyk));
}

TEST(ColorSpace, rendersOnlyIntoRGB) {
  const ColorSpacePtr gray = ColorSpace::fromICC(test::grayGamma22Profile(), Model::gray);
  const ColorSpacePtr cmyk = ColorSpace::fromICC(test::cmykProfile(), Model::cmyk);
  const ColorSpacePtr p3 = ColorSpace::fromICC(test::displayP3Profile(), Model::rgb);
  EXPECT_FALSE(gray->iccData().empty());
  EXPECT_FALSE(cmyk->iccData().empty());
  EXPECT_EQ(renderingSpace(gray), ColorSpace::sRGB());
  EXPECT_EQ(renderingSpace(cmyk), ColorSpace::sRGB());
  EXPECT_EQ(renderingSpace(p3), p3);
}

TEST(ColorSpace, makesAnEquivalentProfileForCodePoints) {
  const ColorSpacePtr p3 = ColorSpace::fromCodePoints(displayP3CodePoints, Model::rgb);
  EXPECT_FALSE(p3->isSRGB());
  EXPECT_TRUE(p3->supportsOutput());
  // Read back as an embedded profile it still says the same.
  EXPECT_EQ(ColorSpace::fromICC(p3->iccData(), Model::rgb)->codePoints(), displayP3CodePoints);
}

TEST(ColorSpace, keepsTheCodePointsOfHighDynamicRange) {
  for (const CodePoints points : {CodePoints{9, 16}, CodePoints{9, 18}, CodePoints{12, 16}}) {
    const ColorSpacePtr space = ColorSpace::fromCodePoints(points, Model::rgb);
    EXPECT_EQ(space->codePoints(), points);
    EXPECT_TRUE(space->supportsOutput());
    EXPECT_FALSE(space->iccData().empty());
  }
}

TEST(ColorSpace, readsHighDynamicRangeOffTheProfileOfItsOwnMaking) {
  for (const CodePoints points : {CodePoints{9, 16}, CodePoints{9, 18}, CodePoints{12, 16}}) {
    const Bytes profile = copyOf(ColorSpace::fromCodePoints(points, Model::rgb)->iccData());
    EXPECT_EQ(ColorSpace::fromICC(profile, Model::rgb)->codePoints(), points);
  }
}

/// A cicp tag (ICC.1:2022 10.3), byte by byte.
using Tag = std::array<std::uint8_t, 12>;
constexpr Tag tagOf(std::uint8_t primaries, std::uint8_t transfer, std::uint8_t matrix,
                    std::uint8_t range) {
  return {'c', 'i', 'c', 'p', 0, 0, 0, 0, primaries, transfer, matrix, range};
}

TEST(ColorSpace, tagsTheProfilesOfCodePoints) {
  const ColorSpacePtr space = ColorSpace::fromCodePoints({9, 16}, Model::rgb);
  const ByteView profile = space->iccData();
  const Tag tag = tagOf(9, 16, 0, 1);
  // The signature stands in the tag table, and again where the tag begins.
  const auto inTable = std::ranges::search(profile, std::string_view("cicp")).begin();
  ASSERT_NE(inTable, profile.end());
  const auto entry = profile.subspan(static_cast<std::size_t>(inTable - profile.begin()), 12);
  const auto number = [&](std::size_t at) {
    return std::size_t{entry[at]} << 24 | std::size_t{entry[at + 1]} << 16 |
           std::size_t{entry[at + 2]} << 8 | entry[at + 3];
  };
  EXPECT_EQ(number(8), tag.size());
  EXPECT_TRUE(std::ranges::equal(profile.subspan(number(4), tag.size()), tag));
}

TEST(ColorSpace, believesNoTagOfOtherCurvesMatricesRangesOrPrimaries) {
  const auto codePointsTagged = [](const Tag& tag) {
    const Bytes adobe = test::adobeRGBProfile();
    const ProfileHandle profile = ICCProfile::open(adobe);
    cmsWriteRawTag(profile.get(), cmsSigcicpTag, tag.data(), tag.size());
    return ColorSpace::fromICC(ICCProfile::serialized(profile), Model::rgb)->codePoints();
  };
  EXPECT_EQ(codePointsTagged(tagOf(9, 16, 0, 1)), (CodePoints{9, 16}));
  for (const Tag& tag :
       {tagOf(9, 13, 0, 1), tagOf(9, 16, 9, 1), tagOf(9, 16, 0, 0), tagOf(2, 16, 0, 1)}) {
    EXPECT_EQ(codePointsTagged(tag), std::nullopt);
  }
}

TEST(ColorSpace, takesUnspecifiedAndReservedCodePointsForSRGB) {
  for (const CodePoints points :
       {CodePoints{2, 2}, CodePoints{1, 2}, CodePoints{2, 13}, CodePoints{1, 13}, CodePoints{0, 0},
        CodePoints{99, 13}, CodePoints{1, 99}, CodePoints{10, 13}}) {
    EXPECT_EQ(ColorSpace::fromCodePoints(points, Model::rgb), ColorSpace::sRGB())
        << points.primaries << "/" << points.transfer;
  }
  EXPECT_EQ(ColorSpace::fromCodePoints({2, 2}, Model::gray), ColorSpace::standard(Model::gray));
}

TEST(ColorSpace, hasACurveForEveryTransferThatStandsInTheTable) {
  for (const std::uint16_t transfer : {1, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18}) {
    const ToneCurveHandle curve = decodingCurve(transfer);
    ASSERT_TRUE(curve) << transfer;
    EXPECT_NEAR(cmsEvalToneCurveFloat(curve.get(), 1), 1, 1e-3) << transfer;
    EXPECT_TRUE(cmsIsToneCurveMonotonic(curve.get())) << transfer;
  }
  EXPECT_NEAR(cmsEvalToneCurveFloat(decodingCurve(13).get(), 0.5), 0.21404, 1e-4);
}

TEST(ColorSpace, putsTheReferenceWhiteOfHighDynamicRangeAtOne) {
  const ToneCurveHandle pq = decodingCurve(16);
  const ToneCurveHandle hlg = decodingCurve(18);
  // ITU-R BT.2408, table 1: 203 cd/m² is 58 % of PQ, 75 % of HLG; 26 cd/m² is 38 % of both.
  EXPECT_NEAR(cmsEvalToneCurveFloat(pq.get(), 0.5806F), 1, 5e-3);
  EXPECT_NEAR(cmsEvalToneCurveFloat(pq.get(), 0.38F), 26.0 / 203, 5e-3);
  EXPECT_NEAR(cmsEvalToneCurveFloat(hlg.get(), 0.75F), 1, 2e-3);
  EXPECT_NEAR(cmsEvalToneCurveFloat(hlg.get(), 0.38F), 26.0 / 203, 5e-3);
  for (const float bright : {0.8F, 0.9F, 1.0F}) {
    EXPECT_EQ(cmsEvalToneCurveFloat(pq.get(), bright), 1);
    EXPECT_EQ(cmsEvalToneCurveFloat(hlg.get(), bright), 1);
  }
  EXPECT_EQ(cmsEvalToneCurveFloat(pq.get(), 0), 0);
  EXPECT_EQ(cmsEvalToneCurveFloat(hlg.get(), 0), 0);
}

TEST(ColorSpace, tellsLinearLight) {
  constexpr Chromaticities adobe{{0.64, 0.33}, {0.21, 0.71}, {0.15, 0.06}, {0.3127, 0.329}, 1};
  for (const ColorSpacePtr& linear :
       {ColorSpace::fromCodePoints({1, 8}, Model::rgb),
        ColorSpace::fromCodePoints({12, 8}, Model::rgb),
        ColorSpace::fromCodePoints({1, 8}, Model::gray),
        ColorSpace::fromChromaticities(adobe, Model::rgb),
        ColorSpace::fromChromaticities(adobe, Model::gray),
        ColorSpace::fromICC(test::linearAdobeRGBProfile(), Model::rgb),
        ColorSpace::fromICC(test::linearGrayProfile(), Model::gray)}) {
    EXPECT_TRUE(linear->isLinear());
  }
  for (const ColorSpacePtr& other :
       {ColorSpace::sRGB(), ColorSpace::standard(Model::gray), ColorSpace::standard(Model::cmyk),
        ColorSpace::fromCodePoints(displayP3CodePoints, Model::rgb),
        ColorSpace::fromCodePoints({9, 16}, Model::rgb),
        ColorSpace::fromICC(test::adobeRGBProfile(), Model::rgb),
        ColorSpace::fromICC(test::grayGamma22Profile(), Model::gray),
        ColorSpace::fromICC(test::grayLightnessProfile(), Model::gray),
        ColorSpace::fromICC(test::tabledLinearProfile(), Model::rgb),
        ColorSpace::fromICC(test::cmykProfile(), Model::cmyk)}) {
    EXPECT_FALSE(other->isLinear());
  }
}

TEST(ColorSpace, givesLinearLightSRGBsCurveOnTheSamePrimaries) {
  EXPECT_EQ(ColorSpace::fromCodePoints({1, 8}, Model::rgb)->withSRGBCurve(), ColorSpace::sRGB());
  EXPECT_EQ(ColorSpace::fromCodePoints({1, 8}, Model::gray)->withSRGBCurve(), ColorSpace::sRGB());
  EXPECT_EQ(ColorSpace::fromICC(test::linearGrayProfile(), Model::gray)->withSRGBCurve(),
            ColorSpace::sRGB());
  EXPECT_EQ(ColorSpace::fromCodePoints({22, 8}, Model::rgb)->withSRGBCurve()->codePoints(),
            (CodePoints{22, 13}));
  const Bytes linearP3 = copyOf(ColorSpace::fromCodePoints({12, 8}, Model::rgb)->iccData());
  EXPECT_EQ(ColorSpace::fromICC(linearP3, Model::rgb)->withSRGBCurve()->codePoints(),
            displayP3CodePoints);
  const Bytes linearSRGB = copyOf(ColorSpace::fromCodePoints({1, 8}, Model::rgb)->iccData());
  EXPECT_EQ(ColorSpace::fromICC(linearSRGB, Model::rgb)->withSRGBCurve(), ColorSpace::sRGB());
}

TEST(ColorSpace, makesAProfileOfTheSamePrimariesForLinearLight) {
  const auto linear = ColorSpace::fromICC(test::linearAdobeRGBProfile(), Model::rgb);
  const auto encoded = linear->withSRGBCurve();
  EXPECT_FALSE(encoded->isLinear());
  EXPECT_TRUE(encoded->supportsOutput());
  EXPECT_EQ(encoded->codePoints(), std::nullopt);
  EXPECT_EQ(copyOf(encoded->iccData()), copyOf(linear->withSRGBCurve()->iccData()));
  const ProfileHandle from = ICCProfile::open(linear->iccData());
  const ProfileHandle made = ICCProfile::open(encoded->iccData());
  for (const auto tag : {cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag}) {
    const auto* own = static_cast<const cmsCIEXYZ*>(cmsReadTag(from.get(), tag));
    const auto* other = static_cast<const cmsCIEXYZ*>(cmsReadTag(made.get(), tag));
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(own->X, other->X);
    EXPECT_EQ(own->Y, other->Y);
    EXPECT_EQ(own->Z, other->Z);
  }
}

TEST(ColorSpace, makesAnEquivalentProfileForChromaticities) {
  constexpr Chromaticities adobe{
      {0.64, 0.33}, {0.21, 0.71}, {0.15, 0.06}, {0.3127, 0.3290}, 2.19921875};
  const ColorSpacePtr space = ColorSpace::fromChromaticities(adobe, Model::rgb);
  EXPECT_FALSE(space->isSRGB());
  EXPECT_TRUE(space->supportsOutput());
}

TEST(ColorSpace, takesImpossibleChromaticitiesForSRGB) {
  constexpr Chromaticities flat{{0, 0}, {0, 0}, {0, 0}, {0, 0}, 2.2};
  constexpr Chromaticities noGamma{{0.64, 0.33}, {0.3, 0.6}, {0.15, 0.06}, {0.3127, 0.329}, 0};
  EXPECT_EQ(ColorSpace::fromChromaticities(flat, Model::rgb), ColorSpace::sRGB());
  EXPECT_EQ(ColorSpace::fromChromaticities(noGamma, Model::rgb), ColorSpace::sRGB());
}

TEST(ColorSpace, writesTheSameProfileAtAnyTime) {
  const auto p3 = [] {
    return copyOf(ColorSpace::fromCodePoints(displayP3CodePoints, Model::rgb)->iccData());
  };
  const Bytes first = p3();
  EXPECT_EQ(first, p3());
  EXPECT_EQ(first[24], 0x07);  // the year 2000, not the clock's
  EXPECT_EQ(first[25], 0xD0);
}

}  // namespace
}  // namespace orvane
