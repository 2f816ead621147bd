#pragma once

#include "codecs/OpaqueRows.h"

namespace orvane {

/// The share, 0…1, of a picture's 2×2 blocks within which the chroma jumps: where coding chroma at
/// half its resolution (4:2:0) smears coloured text and the edges of saturated areas. Photographs
/// have next to none. Looks at blocks on a grid, some ten thousand in a large picture.
double chromaEdgeShare(OpaqueRows& rows);

}  // namespace orvane
