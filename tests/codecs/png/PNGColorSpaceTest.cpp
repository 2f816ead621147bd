#include <gtest/gtest.h>

#include "codecs/ImageLimits.h"
#include "codecs/ImageSource.h"
#include "support/PNGBuilder.h"
#include "support/TestProfiles.h"

namespace orvane::test {
namespace {

const PNGChunk displayP3{"cICP", {12, 13, 0, 1}};
const PNGChunk sRGBIntent{"sRGB", {0}};

PNGChunk gamma(std::uint32_t encoding) { return {"gAMA", pngIntegers({encoding})}; }

const std::vector<std::uint32_t> sRGBPoints{31270, 32900, 64000, 33000, 30000, 60000, 15000, 6000};
const std::vector<std::uint32_t> adobePoints{31270, 32900, 64000, 33000, 21000, 71000, 15000, 6000};

PNGChunk chromaticities(const std::vector<std::uint32_t>& points) {
  return {"cHRM", pngIntegers(points)};
}

ColorSpacePtr spaceOf(std::vector<PNGChunk> chunks, std::uint8_t colorType = rgbType) {
  const Bytes file = buildPNG({.colorType = colorType, .beforeData = std::move(chunks)});
  return ImageSource::create(file)->image().colorSpace;
}

Bytes profileOf(const ColorSpacePtr& space) {
  return Bytes(space->iccData().begin(), space->iccData().end());
}

constexpr Chromaticities adobe{
    {0.64, 0.33}, {0.21, 0.71}, {0.15, 0.06}, {0.3127, 0.329}, 100'000.0 / 55'556};
constexpr Chromaticities linearSRGB{{0.64, 0.33}, {0.3, 0.6}, {0.15, 0.06}, {0.3127, 0.329}, 1.0};

TEST(PNGColorSpace, isSRGBWithoutAnyChunk) {
  EXPECT_EQ(spaceOf({}), ColorSpace::sRGB());
  EXPECT_EQ(spaceOf({}, grayType), ColorSpace::standard(ColorSpace::Model::gray));
}

TEST(PNGColorSpace, prefersCICPThenICCPThenSRGBThenGAMAInAnyOrder) {
  const PNGChunk profile = profileChunk(adobeRGBProfile());
  const ColorSpacePtr ofCodePoints = spaceOf({gamma(100'000), sRGBIntent, profile, displayP3});
  EXPECT_EQ(ofCodePoints->codePoints(), displayP3CodePoints);
  const ColorSpacePtr ofProfile = spaceOf({gamma(100'000), sRGBIntent, profile});
  EXPECT_EQ(profileOf(ofProfile), adobeRGBProfile());
  const ColorSpacePtr ofIntent = spaceOf({gamma(100'000), chromaticities(adobePoints), sRGBIntent});
  EXPECT_TRUE(ofIntent->isSRGB());
  EXPECT_FALSE(spaceOf({gamma(100'000), chromaticities(adobePoints)})->isSRGB());
}

TEST(PNGColorSpace, ignoresCodePointsThatArePartOfAnotherMatrixOrRange) {
  const PNGChunk profile = profileChunk(displayP3Profile());
  for (const Bytes& payload :
       {Bytes{9, 13, 1, 1}, Bytes{9, 13, 0, 0}, Bytes{9, 13, 0}, Bytes{9, 13, 0, 1, 0}}) {
    EXPECT_EQ(profileOf(spaceOf({{"cICP", payload}, profile})), displayP3Profile());
  }
}

TEST(PNGColorSpace, goesOnWithoutCodePointsThatNameNoSpace) {
  const PNGChunk profile = profileChunk(adobeRGBProfile());
  // Unspecified, reserved, XYZ; one of the two numbers.
  for (const Bytes& payload : {Bytes{2, 2, 0, 1}, Bytes{0, 0, 0, 1}, Bytes{10, 13, 0, 1},
                               Bytes{1, 255, 0, 1}, Bytes{2, 13, 0, 1}, Bytes{12, 2, 0, 1}}) {
    const PNGChunk nothing{"cICP", payload};
    EXPECT_EQ(profileOf(spaceOf({nothing, profile, sRGBIntent})), adobeRGBProfile());
    EXPECT_TRUE(spaceOf({nothing, sRGBIntent, gamma(50'000)})->isSRGB());
    EXPECT_FALSE(spaceOf({nothing, gamma(50'000)})->isSRGB());
    EXPECT_TRUE(spaceOf({nothing})->isSRGB());
  }
}

TEST(PNGColorSpace, needsOnlyTheCurveOfCodePointsForGrey) {
  const PNGChunk profile = profileChunk(grayGamma22Profile());
  EXPECT_EQ(spaceOf({{"cICP", {2, 8, 0, 1}}, profile}, grayType)->codePoints()->transfer, 8);
  EXPECT_EQ(profileOf(spaceOf({{"cICP", {1, 2, 0, 1}}, profile}, grayType)), grayGamma22Profile());
}

TEST(PNGColorSpace, appliesToGreyToo) {
  EXPECT_EQ(profileOf(spaceOf({profileChunk(grayGamma22Profile())}, grayType)),
            grayGamma22Profile());
  const ColorSpacePtr linear = spaceOf({gamma(100'000)}, grayAlphaType);
  EXPECT_EQ(linear->model(), ColorSpace::Model::gray);
  EXPECT_NE(linear, ColorSpace::standard(ColorSpace::Model::gray));
  EXPECT_EQ(spaceOf({{"cICP", {1, 8, 0, 1}}}, grayType)->codePoints(), (CodePoints{1, 8}));
}

TEST(PNGColorSpace, isThatOfTheStandardWhereTheProfileIsOfAnotherModel) {
  EXPECT_EQ(spaceOf({profileChunk(displayP3Profile())}, grayType),
            ColorSpace::standard(ColorSpace::Model::gray));
  EXPECT_TRUE(spaceOf({profileChunk(grayGamma22Profile())})->isSRGB());
}

TEST(PNGColorSpace, isThatOfTheStandardWhereTheProfileCannotBeUnpacked) {
  const PNGChunk whole = profileChunk(adobeRGBProfile());
  PNGChunk cut = whole;
  cut.payload.resize(cut.payload.size() / 2);
  PNGChunk otherMethod = whole;
  otherMethod.payload[5] = 1;
  PNGChunk flipped = whole;
  flipped.payload[40] ^= 0xFF;
  const PNGChunk onlyAName{"iCCP", {'n', 'a', 'm', 'e'}};
  for (const PNGChunk& broken : {cut, otherMethod, flipped, onlyAName, PNGChunk{"iCCP", {}}}) {
    EXPECT_TRUE(spaceOf({broken})->isSRGB());
    EXPECT_TRUE(spaceOf({broken, gamma(100'000)})->isSRGB());
  }
  const Bytes damaged = withWrongCRC(buildPNG({.beforeData = {whole}}), "iCCP");
  EXPECT_TRUE(ImageSource::create(damaged)->image().colorSpace->isSRGB());
}

TEST(PNGColorSpace, isSRGBForAProfileThatIsNone) {
  EXPECT_TRUE(spaceOf({profileChunk(Bytes(500, 7))})->isSRGB());
}

TEST(PNGColorSpace, keepsProfilesThatLibpngWouldNotTake) {
  Bytes profile = adobeRGBProfile();
  profile[68] ^= 1;  // the illuminant (ICC.1:2022 clause 7.2.16), D50 in any decent profile
  EXPECT_EQ(profileOf(spaceOf({profileChunk(profile)})), profile);
}

TEST(PNGColorSpace, refusesProfilesPastTheLimit) {
  Bytes profile = adobeRGBProfile();
  profile.resize(ImageLimits::maximumICCBytes);
  EXPECT_NO_THROW(spaceOf({profileChunk(profile)}));
  profile.resize(ImageLimits::maximumICCBytes + 1);
  EXPECT_THROW(spaceOf({profileChunk(profile)}), UnreadableImage);
}

TEST(PNGColorSpace, takesPrimariesAndExponentFromCHRMAndGAMA) {
  const auto expected = ColorSpace::fromChromaticities(adobe, ColorSpace::Model::rgb);
  EXPECT_EQ(profileOf(spaceOf({gamma(55'556), chromaticities(adobePoints)})), profileOf(expected));
}

TEST(PNGColorSpace, takesSRGBPrimariesWhereCHRMIsMissingOrImpossible) {
  const auto expected = ColorSpace::fromChromaticities(linearSRGB, ColorSpace::Model::rgb);
  EXPECT_EQ(profileOf(spaceOf({gamma(100'000)})), profileOf(expected));
  const std::vector<std::uint32_t> nothing(8, 0);
  std::vector<std::uint32_t> tooMuch = sRGBPoints;
  tooMuch[2] = 90000;
  const std::vector<std::uint32_t> tooFew(7, 30000);
  const std::vector<std::uint32_t> huge(8, 0xFFFFFFFF);
  for (const auto& points : {nothing, tooMuch, tooFew, huge}) {
    EXPECT_EQ(profileOf(spaceOf({gamma(100'000), chromaticities(points)})), profileOf(expected));
  }
}

TEST(PNGColorSpace, isSRGBForAGammaOf2Point2WithItsPrimaries) {
  for (const std::uint32_t encoding : {45'454U, 45'455U, 45'450U, 45'460U}) {
    EXPECT_TRUE(spaceOf({gamma(encoding)})->isSRGB());
    EXPECT_TRUE(spaceOf({gamma(encoding), chromaticities(sRGBPoints)})->isSRGB());
    EXPECT_FALSE(spaceOf({gamma(encoding), chromaticities(adobePoints)})->isSRGB());
  }
  EXPECT_FALSE(spaceOf({gamma(50'000)})->isSRGB());
}

TEST(PNGColorSpace, isSRGBForNonsense) {
  for (const std::uint32_t encoding : {0U, 1U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
    EXPECT_TRUE(spaceOf({gamma(encoding)})->isSRGB()) << encoding;
  }
  EXPECT_TRUE(spaceOf({{"gAMA", {0, 1}}})->isSRGB());
  EXPECT_TRUE(spaceOf({chromaticities(adobePoints)})->isSRGB());  // no exponent goes with them
  const std::vector<std::uint32_t> oneColour{31270, 32900, 30000, 30000,
                                             30000, 30000, 30000, 30000};
  EXPECT_TRUE(spaceOf({gamma(100'000), chromaticities(oneColour)})->isSRGB());
}

TEST(PNGColorSpace, ignoresChunksAfterTheImageData) {
  const Bytes file = buildPNG({.afterData = {displayP3, gamma(100'000)}});
  EXPECT_TRUE(ImageSource::create(file)->image().colorSpace->isSRGB());
}

}  // namespace
}  // namespace orvane::test
