#pragma once

#include <cstddef>
#include <cstdint>

/// Rows of 8-bit R, G, B, A to rows of YCbCr 4:2:0 planes, by the matrix of Rec. ITU-R BT.601, full
/// range.
namespace orvane::YCbCrRows {

/// Two rows of `width` samples of luma, and one of (width + 1) / 2 samples of Cb and of Cr. For a
/// last row without a partner, both pointers to luma name it.
struct Rows {
  std::uint8_t* upperLuma;
  std::uint8_t* lowerLuma;
  std::uint8_t* cb;
  std::uint8_t* cr;
};

/// Chroma is that of each four pixels' mean in linear light, weighted with alpha. Luma corrects
/// most of the luminance error of the shared chroma. It does not correct all of it, because the
/// error is smaller in decoders that interpolate chroma. Takes sRGB's transfer curve for every
/// picture, which is an approximation for other RGB spaces. For a last row without a partner, pass
/// it twice.
void writeColor(const std::uint8_t* upper, const std::uint8_t* lower, std::size_t width,
                const Rows& rows);

/// One row: `width` samples.
void writeAlpha(const std::uint8_t* rgba, std::size_t width, std::uint8_t* alpha);

}  // namespace orvane::YCbCrRows
