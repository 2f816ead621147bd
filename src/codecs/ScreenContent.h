#pragma once

#include "codecs/OpaqueRows.h"

namespace orvane {

/// Whether a codec's tools for screen content (palettes) pay for a picture: text, windows, charts.
/// There nearly all pixels are exactly like the one to their left, and of the others many are quite
/// different. Neither holds for photographs, and not both for flat pictures and soft drawings.
/// Looks at about a million pixels of a large picture.
bool suitsScreenContentTools(OpaqueRows& rows);

}  // namespace orvane
