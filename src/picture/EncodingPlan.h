#pragma once

#include <cstdint>
#include <variant>

namespace orvane {

/// How one picture is to be encoded.
struct EncodingPlan {
  struct Lossy {
    double quality = 0;  ///< codec quality, 0…100
    bool operator==(const Lossy&) const = default;
  };
  struct NearLossless {
    int level = 0;  ///< preprocessing, 0 (strongest)…100 (none)
    bool operator==(const NearLossless&) const = default;
  };
  struct Lossless {
    bool operator==(const Lossless&) const = default;
  };
  using Mode = std::variant<Lossy, NearLossless, Lossless>;

  /// Encoders derive their own effort setting from the ordinal.
  enum class Effort : std::uint8_t { fast, balanced, thorough };

  Mode mode;
  Effort effort = Effort::balanced;
  double quality = 0;              ///< effective perceptual quality, 1…100
  double losslessQuality = 0;      ///< codec quality of a lossy second attempt
  bool losslessCandidate = false;  ///< the second attempt is lossless
  bool singlePass = false;         ///< no second attempt
  float ditheringLevel = 0;        ///< palette dithering, 0…1
  bool preferLossless = false;     ///< PNG output is truecolour
  int threads = 1;                 ///< at most; the bytes do not depend on them

  bool operator==(const EncodingPlan&) const = default;
};

/// 0, 1, 2 for fast, balanced, thorough.
constexpr int ordinal(EncodingPlan::Effort effort) { return static_cast<int>(effort); }

}  // namespace orvane
