#pragma once

#include <cstddef>
#include <cstdint>

/// Rows of 8-bit R, G, B, A to rows of YCbCr planes, by the matrix of Rec. ITU-R BT.601, full
/// range.
namespace orvane::YCbCrRows {

/// One row: `width` samples.
void writeLuma(const std::uint8_t* rgba, std::size_t width, std::uint8_t* luma);
void writeAlpha(const std::uint8_t* rgba, std::size_t width, std::uint8_t* alpha);

/// One row of 4:2:0 chroma, (width + 1) / 2 samples, from the two rows that share it: the mean of
/// each four pixels, weighted with alpha. For a last row without a partner, pass it twice.
void writeChroma(const std::uint8_t* upper, const std::uint8_t* lower, std::size_t width,
                 std::uint8_t* cb, std::uint8_t* cr);

}  // namespace orvane::YCbCrRows
