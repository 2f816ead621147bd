#include "codecs/jpeg/PixelStrip.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/TestImages.h"

namespace orvane {
namespace {

TEST(PixelStrip, repeatsTheLastColumnAndRow) {
  const Image image = test::noisyImage(19, 21);
  OpaqueRows rows(image);
  PixelStrip strip(19, 16);
  EXPECT_EQ(strip.width(), 32u);
  EXPECT_EQ(strip.height(), 16u);
  for (const std::size_t first : {0u, 16u}) {
    strip.read(rows, first);
    for (std::size_t y = 0; y < 16; ++y) {
      for (std::size_t x = 0; x < 32; ++x) {
        const auto pixel = test::pixelAt(image, std::min<std::size_t>(x, 18),
                                         std::min<std::size_t>(first + y, 20));
        for (std::size_t c = 0; c < 3; ++c) ASSERT_EQ(strip.row(c, y)[x], pixel[c]);
      }
    }
  }
}

TEST(PixelStrip, isAsWideAsPicturesOfWholeUnits) {
  EXPECT_EQ(PixelStrip(16, 16).width(), 16u);
  EXPECT_EQ(PixelStrip(1, 8).width(), 8u);
}

}  // namespace
}  // namespace orvane
