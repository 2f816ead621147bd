#include "codecs/avif/AVIFLibrary.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

using AVIFLibrary::aomVersionIn;
using AVIFLibrary::Version;

TEST(AVIFLibrary, findsTheVersionOfLibaomAmongThoseOfOtherCodecs) {
  EXPECT_EQ(aomVersionIn("aom [enc/dec]:v3.6.0"), (Version{3, 6}));
  EXPECT_EQ(aomVersionIn("dav1d [dec]:1.5.1, aom [enc/dec]:v3.12.1, rav1e [enc]:0.7.1 (UNKNOWN)"),
            (Version{3, 12}));
  EXPECT_EQ(aomVersionIn("aom [enc/dec]:3.14.1"), (Version{3, 14}));
  EXPECT_EQ(aomVersionIn("aom [enc]:3.9.0-146-g46"), (Version{3, 9}));
}

TEST(AVIFLibrary, findsNoVersionWhereThereIsNoLibaom) {
  for (const char* const codecs : {"", "dav1d [dec]:1.0.0", "aom [", "aom [enc/dec]:", "aom [:v"}) {
    EXPECT_EQ(aomVersionIn(codecs), Version()) << codecs;
  }
  EXPECT_EQ(aomVersionIn("aom [enc/dec]:v3"), (Version{3, 0}));
}

TEST(AVIFLibrary, tellsTheVersionOfTheInstalledLibaom) {
  EXPECT_GE(AVIFLibrary::aomVersion(), (Version{1, 0}));
  EXPECT_LT(AVIFLibrary::aomVersion(), (Version{100, 0}));
}

}  // namespace
}  // namespace orvane
