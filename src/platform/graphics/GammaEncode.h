#pragma once

#include "platform/graphics/Image.h"

namespace orvane {

/// Gives `linear`, a picture in a linear space, sRGB's curve (IEC 61966-2-1) on the same primaries:
/// R, G, B, A of 16 bits, straight when it has alpha. 8 linear bits would show bands in the shades.
/// Throws std::bad_alloc.
Image gammaEncode(const Image& linear);

}  // namespace orvane
