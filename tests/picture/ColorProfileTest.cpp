#include "picture/ColorProfile.h"

#include <gtest/gtest.h>

#include "support/TestProfiles.h"

namespace orvane {
namespace {

TEST(ColorProfile, embedsNothingForSRGBAndExtendedSRGB) {
  EXPECT_FALSE(ColorProfile::embeddableICC(*ColorSpace::sRGB()).has_value());
  const ColorSpace extended(ColorSpace::Model::rgb, ColorSpace::extendedSRGBName,
                            test::displayP3Profile(), std::nullopt);
  EXPECT_FALSE(ColorProfile::embeddableICC(extended).has_value());
}

TEST(ColorProfile, embedsTheProfileOfASpaceWithoutAName) {
  const Bytes profile = test::displayP3Profile();
  const ColorSpacePtr p3 = ColorSpace::fromICC(profile, ColorSpace::Model::rgb);
  const auto embedded = ColorProfile::embeddableICC(*p3);
  ASSERT_TRUE(embedded.has_value());
  EXPECT_EQ(Bytes(embedded->begin(), embedded->end()), profile);
}

TEST(ColorProfile, embedsTheProfileOfASpaceOfAnotherName) {
  const ColorSpace named(ColorSpace::Model::rgb, "kCGColorSpaceDisplayP3", test::displayP3Profile(),
                         std::nullopt);
  EXPECT_TRUE(ColorProfile::embeddableICC(named).has_value());
}

TEST(ColorProfile, embedsNothingForASpaceWithoutAProfile) {
  const ColorSpacePtr ink = ColorSpace::standard(ColorSpace::Model::cmyk);
  EXPECT_FALSE(ColorProfile::embeddableICC(*ink).has_value());
}

}  // namespace
}  // namespace orvane
