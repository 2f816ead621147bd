#include "codecs/YCbCrRows.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "codecs/Luminance.h"
#include "codecs/TransferCurve.h"

namespace orvane::YCbCrRows {
namespace {

/// The part of the luminance error that luma corrects. 1 is best when a decoder repeats chroma, but
/// too much on fine coloured detail when it interpolates.
constexpr float compensation = 0.7F;

using Quad = std::array<const std::uint8_t*, 4>;

bool haveOneColor(const Quad& pixels) {
  return std::all_of(pixels.begin() + 1, pixels.end(), [&](const std::uint8_t* pixel) {
    return std::memcmp(pixel, pixels[0], 3) == 0;
  });
}

Color colorOf(const std::uint8_t* pixel) {
  return {static_cast<float>(pixel[0]), static_cast<float>(pixel[1]), static_cast<float>(pixel[2])};
}

/// In linear light, weighted with alpha; the plain mean when all pixels are transparent.
Color meanOf(const Quad& pixels) {
  // The transfer curve's tables are rounded, and plain areas are common.
  if (haveOneColor(pixels)) return colorOf(pixels[0]);
  std::array<std::uint8_t, 4> weights{pixels[0][3], pixels[1][3], pixels[2][3], pixels[3][3]};
  unsigned sum = weights[0] + weights[1] + weights[2] + weights[3];
  if (sum == 0) {
    weights.fill(1);
    sum = 4;
  }
  const TransferCurve& curve = TransferCurve::sRGB();
  const auto mean = [&](std::size_t i) {
    return curve.meanOf({pixels[0][i], pixels[1][i], pixels[2][i], pixels[3][i]}, weights, sum);
  };
  return {mean(0), mean(1), mean(2)};
}

std::uint8_t sample(float value) {
  return static_cast<std::uint8_t>(std::clamp(value + 0.5F, 0.0F, 255.0F));
}

/// The luma of a pixel whose chroma, without its offset of 128, is shared with others.
std::uint8_t lumaBeside(float blueDifference, float redDifference, const std::uint8_t* pixel) {
  const auto& slopes = TransferCurve::sRGB().slopes();
  const Color color = colorOf(pixel);
  const float change = lumaChangeFor(color, {slopes[pixel[0]], slopes[pixel[1]], slopes[pixel[2]]},
                                     blueDifference, redDifference);
  return sample(lumaOf(color) - compensation * change);
}

}  // namespace

void writeColor(const std::uint8_t* upper, const std::uint8_t* lower, std::size_t width,
                const Rows& rows) {
  for (std::size_t x = 0; x < width; x += 2) {
    const std::size_t right = std::min(x + 1, width - 1);  // a last column has no partner
    const Quad pixels{upper + x * 4, upper + right * 4, lower + x * 4, lower + right * 4};
    const Color mean = meanOf(pixels);
    const std::uint8_t cb = sample(blueDifferenceOf(mean) + 128);
    const std::uint8_t cr = sample(redDifferenceOf(mean) + 128);
    const auto luma = [&](std::size_t i) {
      return lumaBeside(static_cast<float>(cb) - 128, static_cast<float>(cr) - 128, pixels[i]);
    };
    rows.upperLuma[x] = luma(0);
    rows.upperLuma[right] = luma(1);
    rows.lowerLuma[x] = luma(2);
    rows.lowerLuma[right] = luma(3);
    rows.cb[x / 2] = cb;
    rows.cr[x / 2] = cr;
  }
}

void writeAlpha(const std::uint8_t* rgba, std::size_t width, std::uint8_t* out) {
  for (std::size_t x = 0; x < width; ++x) out[x] = rgba[x * 4 + 3];
}

}  // namespace orvane::YCbCrRows
