#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "codecs/look/OpponentPlanes.h"

namespace orvane {

/// Moments of two planes of the same size under a window that is nearly a Gaussian of a standard
/// deviation of 1.5 samples, along one row. Beyond the sides everything is 0. Refers to the planes.
class WindowedMoments {
 public:
  WindowedMoments(const Plane& source, const Plane& coded);

  /// Measures row `y`.
  void measure(std::size_t y);

  const float* sourceMeans() const { return moments_[0].data(); }
  const float* codedMeans() const { return moments_[1].data(); }
  const float* sourceSquares() const { return moments_[2].data(); }
  const float* codedSquares() const { return moments_[3].data(); }
  const float* products() const { return moments_[4].data(); }  ///< of source and coded

 private:
  void gatherColumns(std::size_t y);

  static constexpr std::size_t count = 5;

  const Plane& source_;
  const Plane& coded_;
  std::array<std::vector<float>, count> columns_;  ///< weighted sums along the window's columns
  std::array<std::vector<float>, count> moments_;
};

}  // namespace orvane
