#pragma once

#include <array>
#include <cstdint>

#include "codecs/jpeg/BlockTransform.h"
#include "codecs/jpeg/JPEGSettings.h"
#include "codecs/jpeg/VisualMask.h"

namespace orvane {

/// Turns the coefficients of one component into levels: multiples of the quantisation steps. A
/// level of 1 or another power of two becomes one less where that saves more bits than the larger
/// error is worth: such a level is the first to need another bit (ITU-T T.81, F.1.2.2).
class Quantizer {
 public:
  static Quantizer forLuma(const JPEGSettings& settings);
  static Quantizer forChroma(const JPEGSettings& settings);

  /// Writes 64 levels, row by row.
  void quantize(const Block& coefficients, ErrorVisibility visibility, std::int16_t* levels) const;

  /// The coefficients that a decoder restores from levels.
  Block restore(const std::int16_t* levels) const;

 private:
  explicit Quantizer(const JPEGSettings::Steps& steps);

  std::array<float, 64> steps_{};
  std::array<float, 64> reciprocals_{};
  std::array<float, 64> fineWeights_{};  ///< cost of an error of one step, in bits
  std::array<float, 64> coarseWeights_{};
};

}  // namespace orvane
