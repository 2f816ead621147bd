#pragma once

#include "platform/graphics/Image.h"

namespace orvane {

/// How a coded picture looks beside its source: SSIMULACRA 2.1 (J. Sneyers, Cloudinary, 2023),
/// where 100 is the same picture, 90 is hard to tell from it, 70 is good, and values below 0 exist.
/// Parts that add less than 0.1 to the score of photographs are left out.
///
/// Both are opaque renderings (see isOpaqueRendering) of the same size, whose numbers are taken for
/// sRGB. A side below 8 pixels has no score and counts as 100. Throws std::bad_alloc.
double structuralScore(const Image& source, const Image& coded);

}  // namespace orvane
