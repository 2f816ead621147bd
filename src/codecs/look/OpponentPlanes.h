#pragma once

#include <array>

#include "codecs/Plane.h"
#include "platform/graphics/Image.h"

namespace orvane {

/// R, G, B in proportion to light, 0…1.
using LinearPlanes = std::array<Plane<float>, 3>;

/// Of an opaque rendering (see isOpaqueRendering), whose numbers are taken for sRGB. Throws
/// std::bad_alloc, as the functions below do.
LinearPlanes linearPlanes(const Image& image);

/// The means of 2×2 samples; of fewer at the right and lower edge. Odd sides are rounded up.
LinearPlanes halved(const LinearPlanes& planes);

enum class OpponentChannel { redGreen, luma, blueYellow };

/// X, Y or B − Y of XYB (ISO/IEC 18181-1), each moved and stretched to about 0…1.
Plane<float> opponentPlane(const LinearPlanes& linear, OpponentChannel channel);

}  // namespace orvane
