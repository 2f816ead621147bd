#pragma once

#include "picture/ImageCharacteristics.h"
#include "platform/graphics/Image.h"

namespace orvane {

/// Everything that is known of a picture's content, measured once: encoders decide from it and scan
/// nothing themselves.
struct PictureMeasurements {
  ImageCharacteristics characteristics;

  bool isGray = false;  ///< R = G = B in every pixel

  /// The share, 0…1, of 2×2 blocks within which Cb or Cr jumps. Coding chroma at half its
  /// resolution (4:2:0) smears these blocks: coloured text, edges of saturated areas. Photographs
  /// have almost none. An estimate from some ten thousand blocks in a large picture.
  double chromaEdgeShare = 0;

  bool operator==(const PictureMeasurements&) const = default;
};

/// Adds to the characteristics of a picture, in one pass over its 8-bit rendering (see OpaqueRows),
/// which ends early where the picture is not grey. Throws std::bad_alloc.
PictureMeasurements measure(const Image& image, const ImageCharacteristics& characteristics);

}  // namespace orvane
