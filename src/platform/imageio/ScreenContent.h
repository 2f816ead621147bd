#pragma once

#include "platform/imageio/OpaqueRows.h"

namespace orvane {

/// Whether a picture looks drawn by programs for a screen: text, windows, charts. There nearly all
/// pixels are exactly like the one to their left, and of the others many are quite different.
/// Neither holds for photographs, and not both for paintings and soft drawings. Looks at about a
/// million pixels of a large picture.
bool isScreenContent(OpaqueRows& rows);

}  // namespace orvane
