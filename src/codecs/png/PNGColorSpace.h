#pragma once

#include "codecs/png/PNGChunks.h"
#include "platform/graphics/ColorSpace.h"

namespace orvane {

/// The space that a usable cICP defines; else iCCP, else sRGB, else gAMA (with cHRM), as far as
/// they are there. The standard one without any, and where iCCP holds no usable profile. `model` is
/// rgb or gray. Throws UnreadableImage when the profile is past its limit.
ColorSpacePtr pngColorSpace(const PNGChunks& chunks, ColorSpace::Model model);

}  // namespace orvane
