#include "codecs/jpeg/LumaCompensation.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/Luminance.h"
#include "support/TestImages.h"

namespace orvane {
namespace {

using Chroma = JPEGSettings::Chroma;
using test::luminanceOf;
using test::Pixel;
using test::shownLuminance;

/// A strip of one colour and a decoded chroma of any other.
struct Scene {
  Scene(const Pixel& color, float cb, float cr, Chroma chroma) : pixels(24, side(chroma)) {
    const Image image =
        test::drawImage(24, pixels.height(), ChannelLayout::rgba, AlphaKind::none, 8,
                        ColorSpace::sRGB(), [&](std::size_t, std::size_t) { return color; });
    OpaqueRows rows(image);
    pixels.read(rows, 0);
    const std::size_t width = 24 * 8 / pixels.height();
    DecodedChroma decoded(width, 8);
    for (const std::size_t component : {0u, 1u}) decoded.allocate(component);
    Block block;
    for (std::size_t column = 0; column * 8 < width; ++column) {
      block.fill(cb);
      decoded.store(0, 0, column, block);
      block.fill(cr);
      decoded.store(1, 0, column, block);
    }
    sampleLuma(pixels, luma);
    before = luma.front();
    LumaCompensation(24, pixels.height(), chroma).apply(pixels, 0, decoded, luma);
  }

  static std::size_t side(Chroma chroma) { return chroma == Chroma::full ? 8 : 16; }

  PixelStrip pixels;
  LumaStrip luma;
  float before = 0;
};

TEST(LumaCompensation, leavesLumaWhereChromaIsRight) {
  for (const Chroma chroma : {Chroma::full, Chroma::halved}) {
    const Scene scene({90, 90, 90, 255}, 0, 0, chroma);
    for (const float luma : scene.luma) EXPECT_NEAR(luma, 90, 1e-3);
  }
}

TEST(LumaCompensation, keepsTheLuminanceThatIsShown) {
  for (const Chroma chroma : {Chroma::full, Chroma::halved}) {
    // Cb -33.7, Cr 44.7; decoded a few steps off.
    const Scene scene({180, 110, 60, 255}, -38, 37, chroma);
    const double meant = luminanceOf(180, 110, 60);
    const double without = shownLuminance(scene.before, -38, 37);
    for (const float luma : scene.luma) {
      EXPECT_NEAR(shownLuminance(luma, -38, 37), meant, std::abs(without - meant) / 5);
    }
  }
}

TEST(LumaCompensation, changesLumaByFortyAtMost) {
  const Scene brighter({255, 0, 0, 255}, -43, -120, Chroma::halved);
  const Scene darker({0, 0, 255, 255}, -128, 127, Chroma::halved);
  for (const float luma : brighter.luma) EXPECT_LE(std::abs(luma - brighter.before), 40.001);
  for (const float luma : darker.luma) EXPECT_LE(std::abs(luma - darker.before), 40.001);
  EXPECT_NEAR(brighter.luma[0] - brighter.before, 40, 0.001);
}

}  // namespace
}  // namespace orvane
