#include "codecs/jpeg/StripSampling.h"

#include <gtest/gtest.h>

#include "support/TestImages.h"

namespace orvane {
namespace {

using Chroma = JPEGSettings::Chroma;
using test::Pixel;

PixelStrip stripOf(const Image& image, std::size_t side) {
  OpaqueRows rows(image);
  PixelStrip strip(image.width, side);
  strip.read(rows, 0);
  return strip;
}

Image drawn(const std::function<Pixel(std::size_t, std::size_t)>& pixelAt) {
  return test::drawImage(16, 16, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
                         pixelAt);
}

ChromaStrip chromaOf(const PixelStrip& pixels, Chroma chroma) {
  ChromaStrip strip;
  sampleChroma(pixels, chroma, strip);
  return strip;
}

const auto primaries = [](std::size_t x, std::size_t) {
  return x == 0 ? Pixel{255, 0, 0, 255} : x == 1 ? Pixel{0, 255, 0, 255} : Pixel{0, 0, 255, 255};
};

TEST(StripSampling, weighsLumaAsJFIFDoes) {
  LumaStrip luma;
  sampleLuma(stripOf(drawn(primaries), 16), luma);
  ASSERT_EQ(luma.size(), 256u);
  EXPECT_NEAR(luma[0], 0.299 * 255, 1e-3);
  EXPECT_NEAR(luma[1], 0.587 * 255, 1e-3);
  EXPECT_NEAR(luma[2], 0.114 * 255, 1e-3);
}

TEST(StripSampling, keepsFullChroma) {
  const ChromaStrip strip = chromaOf(stripOf(drawn(primaries), 8), Chroma::full);
  EXPECT_EQ(strip.width, 16u);
  EXPECT_NEAR(strip.planes[1][0], 127.5, 1e-3);
  EXPECT_NEAR(strip.planes[0][1], -0.331264 * 255, 1e-2);
  EXPECT_NEAR(strip.planes[0][2], 127.5, 1e-3);
}

TEST(StripSampling, halvesChromaInLinearLight) {
  const ChromaStrip strip =
      chromaOf(stripOf(drawn([](std::size_t x, std::size_t y) {
                         return (x + y) % 2 == 0 ? Pixel{255, 0, 0, 255} : Pixel{0, 0, 0, 255};
                       }),
                       16),
               Chroma::halved);
  EXPECT_EQ(strip.width, 8u);
  constexpr double half = 187.5;  // of white's light
  for (const float cr : strip.planes[1]) EXPECT_NEAR(cr, half / 2, 0.3);
  for (const float cb : strip.planes[0]) EXPECT_NEAR(cb, -0.168736 * half, 0.3);
}

TEST(StripSampling, seesNoChromaInGray) {
  const ChromaStrip strip = chromaOf(stripOf(drawn([](std::size_t x, std::size_t y) {
                                               const auto shade = static_cast<std::uint16_t>(x * y);
                                               return Pixel{shade, shade, shade, 255};
                                             }),
                                             16),
                                     Chroma::halved);
  for (const auto& plane : strip.planes) {
    for (const float sample : plane) EXPECT_NEAR(sample, 0, 1e-3);
  }
}

}  // namespace
}  // namespace orvane
