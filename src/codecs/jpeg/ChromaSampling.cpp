#include "codecs/jpeg/ChromaSampling.h"

#include "codecs/jpeg/TransferCurve.h"

namespace orvane {
namespace {

struct Color {
  float red, green, blue;
};

float blueDifference(const Color& c) {
  return -0.168736F * c.red - 0.331264F * c.green + 0.5F * c.blue;
}
float redDifference(const Color& c) {
  return 0.5F * c.red - 0.418688F * c.green - 0.081312F * c.blue;
}

/// Fills a strip with the chroma of `colorAt(x, y)`.
template <typename ColorAt>
void fill(ChromaStrip& result, const ColorAt& colorAt) {
  for (std::size_t y = 0; y < 8; ++y) {
    float* const cb = result.planes[0].data() + y * result.width;
    float* const cr = result.planes[1].data() + y * result.width;
    for (std::size_t x = 0; x < result.width; ++x) {
      const Color color = colorAt(x, y);
      cb[x] = blueDifference(color);
      cr[x] = redDifference(color);
    }
  }
}

}  // namespace

void sampleChroma(const PixelStrip& pixels, JPEGSettings::Chroma chroma, ChromaStrip& result) {
  result.width = pixels.width() * 8 / pixels.height();
  for (auto& plane : result.planes) plane.resize(result.width * 8);
  if (chroma == JPEGSettings::Chroma::full) {
    fill(result, [&](std::size_t x, std::size_t y) {
      const auto number = [&](std::size_t channel) {
        return static_cast<float>(pixels.row(channel, y)[x]);
      };
      return Color{number(0), number(1), number(2)};
    });
    return;
  }
  const TransferCurve& curve = TransferCurve::sRGB();
  fill(result, [&](std::size_t x, std::size_t y) {
    const auto mean = [&](std::size_t channel) {
      const std::uint8_t* const upper = pixels.row(channel, y * 2) + x * 2;
      const std::uint8_t* const lower = pixels.row(channel, y * 2 + 1) + x * 2;
      return curve.meanOf(upper[0], upper[1], lower[0], lower[1]);
    };
    return Color{mean(0), mean(1), mean(2)};
  });
}

}  // namespace orvane
