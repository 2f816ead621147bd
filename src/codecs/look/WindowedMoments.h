#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "codecs/Plane.h"

namespace orvane {

/// Moments of two planes of the same size under a window that is nearly a Gaussian of a standard
/// deviation of 1.5 samples, along one row. Samples beyond the sides count as 0. Refers to the
/// planes, which must outlive it. Not for use by several threads at once.
class WindowedMoments {
 public:
  WindowedMoments(const Plane<float>& source, const Plane<float>& coded);

  /// Measures row `y` of the planes. Before, all moments are 0.
  void measure(std::size_t y);

  // As many numbers as a row has samples, of the row that was measured last.
  const float* sourceMeans() const { return moments_[0].data(); }
  const float* codedMeans() const { return moments_[1].data(); }
  const float* sourceSquares() const { return moments_[2].data(); }
  const float* codedSquares() const { return moments_[3].data(); }
  const float* products() const { return moments_[4].data(); }  ///< of source and coded

 private:
  void gatherColumns(std::size_t y);

  static constexpr std::size_t count = 5;

  const Plane<float>& source_;
  const Plane<float>& coded_;
  std::array<std::vector<float>, count> columns_;  ///< weighted sums along the window's columns
  std::array<std::vector<float>, count> moments_;
};

}  // namespace orvane
