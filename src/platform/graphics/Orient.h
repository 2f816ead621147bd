#pragma once

#include "platform/graphics/Image.h"

namespace orvane {

/// Whether a picture of this EXIF orientation (CIPA DC-008, tag 0x0112) is stored turned or
/// mirrored: 2…8.
constexpr bool isTurned(int orientation) { return orientation >= 2 && orientation <= 8; }

/// Redraws `image`, stored in a turned `orientation`, upright: R, G, B, A of its depth in its
/// rendering space, premultiplied when it has alpha. Throws std::bad_alloc.
Image orient(const Image& image, int orientation);

}  // namespace orvane
