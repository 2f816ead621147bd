#pragma once

#include <array>
#include <cstddef>

#include "codecs/OpaqueRows.h"
#include "codecs/jpeg/CoefficientPlanes.h"
#include "codecs/jpeg/DecodedChroma.h"
#include "codecs/jpeg/JPEGSettings.h"
#include "codecs/jpeg/LumaCompensation.h"
#include "codecs/jpeg/PixelStrip.h"
#include "codecs/jpeg/Quantizer.h"
#include "codecs/jpeg/StripSampling.h"
#include "codecs/jpeg/VisualMask.h"

namespace orvane {

/// Turns a picture's pixels into the levels of its coefficients, strip by strip. A strip's chroma
/// is coded first; its luma makes good what that has lost, once the chroma of the strip below is
/// decoded, too.
class CoefficientCoder {
 public:
  /// Fills `planes`: luma, and Cb and Cr where there are three. For a single plane, the rows are
  /// grey and the chroma is Chroma::full. Refers to all three, which must outlive it.
  CoefficientCoder(OpaqueRows& rows, const JPEGSettings& settings, CoefficientPlanes& planes);

  void code();

 private:
  bool hasChroma() const { return planes_.count() > 1; }
  void codeChroma(std::size_t strip);
  void codeChromaBlock(std::size_t component, std::size_t strip, std::size_t column);
  void codeLuma(std::size_t strip);
  ErrorVisibility lumaErrorVisibility(std::size_t column, std::size_t row) const;

  OpaqueRows& rows_;
  const JPEGSettings& settings_;
  CoefficientPlanes& planes_;
  std::size_t side_;  ///< of a coding unit
  VisualMask mask_;
  Quantizer lumaQuantizer_;
  Quantizer chromaQuantizer_;
  std::array<PixelStrip, 2> pixels_;  ///< of strips of even and odd numbers
  ChromaStrip chromaStrip_;
  LumaStrip lumaStrip_;
  DecodedChroma decoded_;
  LumaCompensation compensation_;
};

}  // namespace orvane
