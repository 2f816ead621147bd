#include "codecs/ISOBaseMedia.h"

#include <gtest/gtest.h>

#include "support/BoxBuilder.h"

namespace orvane {
namespace {

using test::box;
using test::ftyp;
using test::view;

TEST(ISOBaseMedia, findsMajorAndCompatibleBrandsButNotTheMinorVersion) {
  const std::string file = box("ftyp", "mif1avisheicmiaf");  // the second is the minor version
  EXPECT_TRUE(ISOBaseMedia::hasBrand(view(file), "mif1"));
  EXPECT_TRUE(ISOBaseMedia::hasBrand(view(file), "heic"));
  EXPECT_TRUE(ISOBaseMedia::hasBrand(view(file), "miaf"));
  EXPECT_FALSE(ISOBaseMedia::hasBrand(view(file), "avis"));
  EXPECT_FALSE(ISOBaseMedia::hasBrand(view(file), "avif"));
}

TEST(ISOBaseMedia, findsNoBrandWhereTheFileDoesNotBeginWithAFileTypeBox) {
  EXPECT_FALSE(ISOBaseMedia::hasBrand(view(box("free", "") + ftyp("avif")), "avif"));
  EXPECT_FALSE(ISOBaseMedia::hasBrand(view("avif"), "avif"));
  EXPECT_FALSE(ISOBaseMedia::hasBrand({}, "avif"));
}

}  // namespace
}  // namespace orvane
