#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "codecs/jpeg/DecodedChroma.h"
#include "codecs/jpeg/JPEGSettings.h"
#include "codecs/jpeg/PixelStrip.h"

namespace orvane {

/// Luma (ITU-T T.871) of one strip, 0…255; as wide and high as the strip of pixels.
using LumaStrip = std::vector<float>;

void sampleLuma(const PixelStrip& pixels, LumaStrip& result);

/// Takes from a strip's luma what the decoded chroma's error adds to the luminance that is shown.
class LumaCompensation {
 public:
  LumaCompensation(std::size_t pictureWidth, std::size_t pictureHeight, std::size_t stripWidth,
                   JPEGSettings::Chroma chroma);

  /// `first` is the strip's upper row in the picture.
  void apply(const PixelStrip& pixels, std::size_t first, const DecodedChroma& decoded,
             LumaStrip& luma);

 private:
  void applyToRow(const PixelStrip& pixels, std::size_t y, const std::uint8_t* cb,
                  const std::uint8_t* cr, float* luma);

  std::size_t width_;
  std::size_t height_;
  JPEGSettings::Chroma chroma_;
  std::vector<std::uint8_t> cb_;
  std::vector<std::uint8_t> cr_;
};

}  // namespace orvane
