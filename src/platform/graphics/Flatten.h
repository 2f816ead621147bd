#pragma once

#include "platform/graphics/Image.h"

namespace orvane {

enum class Backdrop { none, white };

/// An 8-bit copy of `image` without alpha, in its rendering space: composed over white, or with its
/// premultiplied colours as they are. A picture that is its own copy already shares its memory.
/// Throws std::bad_alloc.
Image flatten(const Image& image, Backdrop backdrop);

}  // namespace orvane
