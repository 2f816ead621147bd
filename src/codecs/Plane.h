#pragma once

#include <cstddef>
#include <vector>

namespace orvane {

/// One channel of a picture: `height` rows of `width` samples, packed, from the top. Samples begin
/// as 0.
template <class Sample>
struct Plane {
  std::size_t width;
  std::size_t height;
  std::vector<Sample> samples;

  Plane(std::size_t planeWidth, std::size_t planeHeight)
      : width(planeWidth), height(planeHeight), samples(planeWidth * planeHeight) {}

  Sample* row(std::size_t y) { return samples.data() + y * width; }
  const Sample* row(std::size_t y) const { return samples.data() + y * width; }
};

}  // namespace orvane
