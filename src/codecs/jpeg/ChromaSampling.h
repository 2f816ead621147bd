#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "codecs/jpeg/JPEGSettings.h"
#include "codecs/jpeg/PixelStrip.h"

namespace orvane {

/// Cb and Cr (ITU-T T.871) of one strip, less 128, at the resolution that they are coded at.
struct ChromaStrip {
  std::size_t width = 0;  ///< a multiple of 8; the height is 8
  std::array<std::vector<float>, 2> planes;
};

/// Halved chroma is that of 2×2 pixels' mean in linear light: the light that a display gives from
/// afar, where means of sRGB numbers are too dark.
void sampleChroma(const PixelStrip& pixels, JPEGSettings::Chroma chroma, ChromaStrip& result);

}  // namespace orvane
