#pragma once

#include "platform/graphics/Image.h"

namespace orvane {

/// Whether an EXIF orientation (CIPA DC-008, tag 0x0112) turns or mirrors: 2…8.
constexpr bool isTurned(int orientation) { return orientation >= 2 && orientation <= 8; }

/// `image` redrawn upright from a turned `orientation`: R, G, B, A at its depth, in its rendering
/// space, premultiplied where it has alpha. Throws std::bad_alloc.
Image orient(const Image& image, int orientation);

}  // namespace orvane
