#pragma once

#include <cstddef>
#include <optional>

#include "platform/graphics/Image.h"

namespace orvane {

/// The shape of an encoder's samples, in pixels. Wider bands have fewer seams, narrower ones tell
/// more of the picture.
struct SampleShape {
  std::size_t bandOfSmall;  ///< a multiple of 16, for pictures of less than 1.5 megapixels
  std::size_t bandOfLarge;  ///< the same for larger pictures
  std::size_t mostPixels;   ///< of a sample, as near as whole squares come

  std::size_t bandOf(const Image& image) const;
};

/// A small picture that looks as a large one does when it is coded: bands of columns and rows of
/// it, evenly spread, put side by side. Bands begin at multiples of 16, so that blocks of earlier
/// coding stay whole.
///
/// A third of the pixels, or as many as the shape allows, as an opaque 8-bit rendering (see
/// isOpaqueRendering) into the picture's rendering space; pixels that are not opaque on black.
/// Absent when a side is narrower than a band, or when fewer than four squares, where bands of
/// columns and rows cross, make up a third. Throws std::bad_alloc.
std::optional<Image> sampleOf(const Image& image, const SampleShape& shape);

}  // namespace orvane
