#include "codecs/YCbCrRows.h"

#include <algorithm>
#include <array>

namespace orvane::YCbCrRows {
namespace {

/// BT.601-7, 2.5.1: Kr = 0.299, Kb = 0.114; Cb = (B − Y) / 1.772, Cr = (R − Y) / 1.402. In units of
/// 2^-16. The luma weights sum to 65536, so that white is 255; the chroma weights sum to 0, so that
/// grey has no chroma.
struct Weights {
  int red, green, blue;
};
constexpr Weights luma{19595, 38470, 7471};
constexpr Weights blueChroma{-11059, -21709, 32768};
constexpr Weights redChroma{32768, -27439, -5329};
constexpr int unit = 1 << 16;
constexpr int half = unit / 2;

constexpr int weighted(const Weights& weights, int red, int green, int blue) {
  return weights.red * red + weights.green * green + weights.blue * blue;
}

/// A chroma value, rounded and offset by 128.
std::uint8_t chromaSample(const Weights& weights, const std::array<int, 3>& color) {
  const int value = weighted(weights, color[0], color[1], color[2]) + 128 * unit + half;
  return static_cast<std::uint8_t>(std::min(value / unit, 255));
}

using Block = std::array<const std::uint8_t*, 4>;

/// The mean colour of four pixels, weighted with alpha; the plain mean when all are transparent.
std::array<int, 3> mean(const Block& pixels) {
  const int alphas = pixels[0][3] + pixels[1][3] + pixels[2][3] + pixels[3][3];
  const int weight = alphas == 0 ? 4 : alphas;
  std::array<int, 3> color{};
  for (std::size_t c = 0; c < 3; ++c) {
    int sum = weight / 2;
    for (const std::uint8_t* pixel : pixels) sum += pixel[c] * (alphas == 0 ? 1 : pixel[3]);
    color[c] = sum / weight;
  }
  return color;
}

}  // namespace

void writeLuma(const std::uint8_t* rgba, std::size_t width, std::uint8_t* out) {
  for (std::size_t x = 0; x < width; ++x, rgba += 4) {
    out[x] = static_cast<std::uint8_t>((weighted(luma, rgba[0], rgba[1], rgba[2]) + half) / unit);
  }
}

void writeAlpha(const std::uint8_t* rgba, std::size_t width, std::uint8_t* out) {
  for (std::size_t x = 0; x < width; ++x) out[x] = rgba[x * 4 + 3];
}

void writeChroma(const std::uint8_t* upper, const std::uint8_t* lower, std::size_t width,
                 std::uint8_t* cb, std::uint8_t* cr) {
  for (std::size_t x = 0; x < width; x += 2, upper += 8, lower += 8) {
    const std::size_t right = x + 1 < width ? 4 : 0;  // a last column has no partner
    const Block pixels{upper, upper + right, lower, lower + right};
    const auto color = mean(pixels);
    *cb++ = chromaSample(blueChroma, color);
    *cr++ = chromaSample(redChroma, color);
  }
}

}  // namespace orvane::YCbCrRows
