#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "codecs/jpeg/BlockTransform.h"

namespace orvane {

/// Cb and Cr of a picture as a decoder restores them, 0…255.
class DecodedChroma {
 public:
  /// `width` × `height` samples, as many as the file has.
  DecodedChroma(std::size_t width, std::size_t height);

  /// Makes room for component 0 (Cb) or 1 (Cr). Throws std::bad_alloc.
  void allocate(std::size_t component);

  /// Takes a block that was transformed back, of a component that has room.
  void store(std::size_t component, std::size_t row, std::size_t column, const Block& samples);

  /// Doubles the resolution of one component both ways for row `y` of the luma: weights of 3/4 and
  /// 1/4, as libjpeg and most decoders do. Writes an even number of samples, one or none beyond the
  /// picture.
  void doubleRow(std::size_t component, std::size_t y, std::uint8_t* result) const;

  /// A row of Cb and one of Cr.
  using Rows = std::array<const std::uint8_t*, 2>;

  Rows rows(std::size_t y) const { return {row(0, y), row(1, y)}; }

 private:
  const std::uint8_t* row(std::size_t component, std::size_t y) const {
    return planes_[component].data() + y * paddedWidth_;
  }

  std::size_t width_;
  std::size_t height_;
  std::size_t paddedWidth_;  ///< to whole blocks
  std::array<std::vector<std::uint8_t>, 2> planes_;
};

}  // namespace orvane
