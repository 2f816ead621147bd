#pragma once

#include "platform/graphics/Image.h"

namespace orvane {

/// `linear`, a picture in a linear space, with sRGB's curve (IEC 61966-2-1) on the same primaries:
/// R, G, B, A of 16 bits, straight where it has alpha. In linear light most of the steps of 8 bits
/// are highlights and the shades show bands. Throws std::bad_alloc.
Image gammaEncode(const Image& linear);

}  // namespace orvane
