#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "codecs/jpeg/BlockTransform.h"

namespace orvane {

/// Cb and Cr as a decoder restores them, 0…255, of the last three strips that were coded.
class DecodedChroma {
 public:
  /// `width` × `height` samples, as many as the file has; `paddedWidth` fills whole blocks.
  DecodedChroma(std::size_t width, std::size_t height, std::size_t paddedWidth);

  /// Takes a block that was transformed back: component 0 (Cb) or 1 (Cr), of column `column` of the
  /// blocks of strip `strip`.
  void store(std::size_t component, std::size_t strip, std::size_t column, const Block& samples);

  /// Doubles the resolution of one component both ways for row `y` of the luma: weights of 3/4 and
  /// 1/4, as libjpeg and most decoders do. The strips above and below must be there, too, as far as
  /// the picture has them. Writes an even number of samples, one or none beyond the picture.
  void doubleRow(std::size_t component, std::size_t y, std::uint8_t* result) const;

  /// A row of Cb and one of Cr.
  using Rows = std::array<const std::uint8_t*, 2>;

  Rows rows(std::size_t y) const { return {row(0, y), row(1, y)}; }

 private:
  const std::uint8_t* row(std::size_t component, std::size_t y) const {
    return planes_[component].data() + y % rowsKept * paddedWidth_;
  }

  static constexpr std::size_t rowsKept = 24;

  std::size_t width_;
  std::size_t height_;
  std::size_t paddedWidth_;
  std::array<std::vector<std::uint8_t>, 2> planes_;
};

}  // namespace orvane
