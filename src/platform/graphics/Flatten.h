#pragma once

#include "platform/graphics/Image.h"

namespace orvane {

enum class Backdrop { none, white };

/// Copies `image` to 8 bits without alpha in its rendering space. Over white, or, without a
/// backdrop, the premultiplied colours as they are. Shares the memory of a picture that is such a
/// copy already. Throws std::bad_alloc.
Image flatten(const Image& image, Backdrop backdrop);

}  // namespace orvane
