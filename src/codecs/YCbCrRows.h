#pragma once

#include <cstddef>
#include <cstdint>

/// RGB to YCbCr with the matrix of Rec. ITU-R BT.601 in full range, 8 bits. Rows of R, G, B, A come
/// in, rows of planes go out.
namespace orvane::YCbCrRows {

/// One row: `width` samples.
void writeLuma(const std::uint8_t* rgba, std::size_t width, std::uint8_t* luma);
void writeAlpha(const std::uint8_t* rgba, std::size_t width, std::uint8_t* alpha);

/// One row of 4:2:0 chroma, (width + 1) / 2 samples, from the two rows that share it: the mean of
/// each four pixels, transparent ones counting less. A last row without a partner is given twice.
void writeChroma(const std::uint8_t* upper, const std::uint8_t* lower, std::size_t width,
                 std::uint8_t* cb, std::uint8_t* cr);

}  // namespace orvane::YCbCrRows
