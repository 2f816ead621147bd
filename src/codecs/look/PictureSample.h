#pragma once

#include <cstddef>
#include <optional>

#include "platform/graphics/Image.h"

namespace orvane {

/// In pixels; multiples of 16.
struct BandWidths {
  std::size_t ofSmall;  ///< of pictures of less than 1.5 megapixels
  std::size_t ofLarge;
};

/// A small picture that looks as a large one does when it is coded: bands of columns and rows of
/// it, evenly spread, put side by side. Bands begin at multiples of 16, so that blocks of earlier
/// coding stay whole.
///
/// Gives the opaque 8-bit rendering into the picture's rendering space of a third of the pixels, at
/// most some 600 000. Absent for pictures too small for four squares. Throws std::bad_alloc.
std::optional<Image> sampleOf(const Image& image, BandWidths widths);

}  // namespace orvane
