#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "codecs/OpaqueRows.h"

namespace orvane {

/// One row of a picture's coding units: its pixels as planes of R, G and B. On the right and below
/// the picture its last column and row are repeated.
class PixelStrip {
 public:
  /// `side` is that of a coding unit: 8 or 16.
  PixelStrip(std::size_t pictureWidth, std::size_t side);

  std::size_t width() const { return width_; }    ///< a multiple of the side
  std::size_t height() const { return height_; }  ///< the side

  /// Reads the strip whose upper row is `first`, which lies in the picture.
  void read(OpaqueRows& rows, std::size_t first);

  /// Row `y` of channel 0 (R), 1 (G) or 2 (B).
  const std::uint8_t* row(std::size_t channel, std::size_t y) const {
    return planes_[channel].data() + y * width_;
  }

 private:
  void store(const std::uint8_t* pixels, std::size_t y);
  void repeatRow(std::size_t y);

  std::size_t pictureWidth_;
  std::size_t width_;
  std::size_t height_;
  std::array<std::vector<std::uint8_t>, 3> planes_;
};

}  // namespace orvane
