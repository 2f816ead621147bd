#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "platform/graphics/Image.h"

namespace orvane {

/// One channel of a picture: `height` rows of `width` samples.
struct Plane {
  std::size_t width = 0;
  std::size_t height = 0;
  std::vector<float> samples;

  Plane(std::size_t planeWidth, std::size_t planeHeight)
      : width(planeWidth), height(planeHeight), samples(planeWidth * planeHeight) {}

  float* row(std::size_t y) { return samples.data() + y * width; }
  const float* row(std::size_t y) const { return samples.data() + y * width; }
};

/// R, G, B in proportion to light, 0…1.
using LinearPlanes = std::array<Plane, 3>;

/// Of an opaque rendering (see isOpaqueRendering), whose numbers are taken for sRGB. Throws
/// std::bad_alloc, as the functions below do.
LinearPlanes linearPlanes(const Image& image);

/// The means of 2×2 samples; of fewer at the right and lower edge. Odd sides are rounded up.
LinearPlanes halved(const LinearPlanes& planes);

enum class OpponentChannel { redGreen, luma, blueYellow };

/// X, Y or B − Y of XYB (ISO/IEC 18181-1), each moved and stretched to about 0…1.
Plane opponentPlane(const LinearPlanes& linear, OpponentChannel channel);

}  // namespace orvane
