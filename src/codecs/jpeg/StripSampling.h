#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "codecs/jpeg/JPEGSettings.h"
#include "codecs/jpeg/PixelStrip.h"

namespace orvane {

/// Luma (ITU-T T.871) of one strip, 0…255, row by row: as wide and high as its pixels.
using LumaStrip = std::vector<float>;

void sampleLuma(const PixelStrip& pixels, LumaStrip& result);

/// Cb and Cr (ITU-T T.871) of one strip, less 128, at the resolution that they are coded at.
struct ChromaStrip {
  std::size_t width = 0;  ///< a multiple of 8; the height is 8
  std::array<std::vector<float>, 2> planes;
};

/// Halved chroma is that of 2×2 pixels' mean in linear light, which is the colour that a display
/// shows from afar. Takes sRGB's transfer curve for every picture, which is an approximation for
/// other RGB spaces.
void sampleChroma(const PixelStrip& pixels, JPEGSettings::Chroma chroma, ChromaStrip& result);

}  // namespace orvane
