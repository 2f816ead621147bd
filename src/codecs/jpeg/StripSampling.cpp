#include "codecs/jpeg/StripSampling.h"

#include "codecs/TransferCurve.h"
#include "codecs/YCbCr.h"

namespace orvane {
namespace {

Color colorAt(const PixelStrip& pixels, std::size_t x, std::size_t y) {
  const auto channel = [&](std::size_t i) { return static_cast<float>(pixels.row(i, y)[x]); };
  return {channel(0), channel(1), channel(2)};
}

/// Of the 2×2 pixels right of and below (x, y).
Color meanColorAt(const PixelStrip& pixels, const TransferCurve& curve, std::size_t x,
                  std::size_t y) {
  const auto mean = [&](std::size_t i) {
    const std::uint8_t* const upper = pixels.row(i, y) + x;
    const std::uint8_t* const lower = pixels.row(i, y + 1) + x;
    return curve.meanOf({upper[0], upper[1], lower[0], lower[1]});
  };
  return {mean(0), mean(1), mean(2)};
}

/// Fills a strip with the chroma of `sample(x, y)`.
template <typename Sample>
void fill(ChromaStrip& strip, const Sample& sample) {
  for (std::size_t y = 0; y < 8; ++y) {
    float* const blue = strip.planes[0].data() + y * strip.width;
    float* const red = strip.planes[1].data() + y * strip.width;
    for (std::size_t x = 0; x < strip.width; ++x) {
      const Color color = sample(x, y);
      blue[x] = blueDifferenceOf(color);
      red[x] = redDifferenceOf(color);
    }
  }
}

}  // namespace

void sampleLuma(const PixelStrip& pixels, LumaStrip& result) {
  result.resize(pixels.width() * pixels.height());
  for (std::size_t y = 0; y < pixels.height(); ++y) {
    float* const row = result.data() + y * pixels.width();
    for (std::size_t x = 0; x < pixels.width(); ++x) row[x] = lumaOf(colorAt(pixels, x, y));
  }
}

void sampleChroma(const PixelStrip& pixels, JPEGSettings::Chroma chroma, ChromaStrip& result) {
  result.width = pixels.width() * 8 / pixels.height();
  for (auto& plane : result.planes) plane.resize(result.width * 8);
  if (chroma == JPEGSettings::Chroma::full) {
    fill(result, [&](std::size_t x, std::size_t y) { return colorAt(pixels, x, y); });
  } else {
    const TransferCurve& curve = TransferCurve::sRGB();
    fill(result,
         [&](std::size_t x, std::size_t y) { return meanColorAt(pixels, curve, x * 2, y * 2); });
  }
}

}  // namespace orvane
