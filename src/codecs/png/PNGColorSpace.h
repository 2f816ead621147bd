#pragma once

#include "codecs/png/PNGChunks.h"
#include "platform/graphics/ColorSpace.h"

namespace orvane {

/// The space that a PNG's chunks name: cICP, else iCCP, else sRGB, else gAMA with cHRM, whichever
/// is the first to say something usable; else the standard one. `model` is rgb or gray.
/// Throws UnreadableImage when the profile is past its limit.
ColorSpacePtr pngColorSpace(const PNGChunks& chunks, ColorSpace::Model model);

}  // namespace orvane
