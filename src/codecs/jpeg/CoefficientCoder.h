#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

#include "codecs/OpaqueRows.h"
#include "codecs/jpeg/CoefficientPlane.h"
#include "codecs/jpeg/DecodedChroma.h"
#include "codecs/jpeg/JPEGSettings.h"
#include "codecs/jpeg/LumaCompensation.h"
#include "codecs/jpeg/PixelStrip.h"
#include "codecs/jpeg/Quantizer.h"
#include "codecs/jpeg/StripSampling.h"
#include "codecs/jpeg/VisualMask.h"

namespace orvane {

/// Turns a picture's pixels into the levels of its coefficients, strip by strip. Chroma comes
/// first, for luma makes good what a decoder does not restore of it. The steps are apart so that
/// the levels of all components never lie in memory at once.
class CoefficientCoder {
 public:
  using ChromaPlanes = std::array<CoefficientPlane, 2>;  ///< Cb and Cr

  /// Refers to both, which must outlive it.
  CoefficientCoder(OpaqueRows& rows, const JPEGSettings& settings);

  ChromaPlanes codeChroma();

  /// Keeps the samples that a decoder restores of the chroma. Frees the levels of each component
  /// as soon as it is done.
  void decodeChroma(ChromaPlanes planes);

  /// After decodeChroma, whose samples it frees, or without for a grey picture, which takes
  /// Chroma::full.
  CoefficientPlane codeLuma();

 private:
  void codeChromaStrip(std::size_t strip, ChromaPlanes& planes);
  void decodeComponent(std::size_t component, const CoefficientPlane& plane);
  void findSaturatedRed(const CoefficientPlane& redDifference);
  void codeLumaStrip(std::size_t strip, CoefficientPlane& plane);
  ErrorVisibility lumaErrorVisibility(std::size_t column, std::size_t row) const;

  OpaqueRows& rows_;
  const JPEGSettings& settings_;
  std::size_t side_;     ///< of a coding unit
  std::size_t columns_;  ///< of coding units
  std::size_t strips_;
  VisualMask mask_;
  Quantizer lumaQuantizer_;
  Quantizer chromaQuantizer_;
  PixelStrip pixels_;
  ChromaStrip chromaStrip_;
  LumaStrip lumaStrip_;
  LumaCompensation compensation_;
  std::optional<DecodedChroma> decoded_;
  std::vector<bool> isSaturatedRed_;  ///< by coding unit
};

}  // namespace orvane
