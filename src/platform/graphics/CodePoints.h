#pragma once

#include <cstdint>

namespace orvane {

/// Colour primaries and transfer characteristics as ITU-T H.273 numbers them. PNG's cICP chunk and
/// HEIF's nclx box carry them with a matrix and a range, which the readers apply: pictures are
/// full-range RGB or grey here.
struct CodePoints {
  std::uint16_t primaries = 2;  ///< H.273 table 2; 2 is unspecified
  std::uint16_t transfer = 2;   ///< H.273 table 3; 2 is unspecified

  bool operator==(const CodePoints&) const = default;
};

/// Whether the transfer is PQ (SMPTE ST 2084) or HLG (ITU-R BT.2100).
constexpr bool hasHighDynamicRange(CodePoints codePoints) {
  return codePoints.transfer == 16 || codePoints.transfer == 18;
}

inline constexpr CodePoints sRGBCodePoints{1, 13};
inline constexpr CodePoints displayP3CodePoints{12, 13};

}  // namespace orvane
