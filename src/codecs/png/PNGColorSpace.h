#pragma once

#include "codecs/png/PNGChunks.h"
#include "platform/graphics/ColorSpace.h"

namespace orvane {

/// The space that the first usable chunk of cICP, iCCP, sRGB and gAMA (with cHRM) defines, in this
/// order; the standard one without any. `model` is rgb or gray.
/// Throws UnreadableImage when the profile is past its limit.
ColorSpacePtr pngColorSpace(const PNGChunks& chunks, ColorSpace::Model model);

}  // namespace orvane
