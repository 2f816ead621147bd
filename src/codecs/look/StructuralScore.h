#pragma once

#include <vector>

#include "codecs/Plane.h"
#include "platform/graphics/Image.h"

namespace orvane {

/// How coded pictures look beside their source: SSIMULACRA 2.1 (J. Sneyers, Cloudinary, 2023),
/// where 100 is the same picture, 90 is hard to tell from it, 70 is good, and values below 0 exist.
/// Parts that add less than 0.1 to the score of photographs are left out.
///
/// Pictures are opaque renderings (see isOpaqueRendering), whose numbers are taken for sRGB. May be
/// used by several threads at once. Throws std::bad_alloc.
class StructuralScore {
 public:
  /// Keeps 7 bytes a pixel of the source.
  explicit StructuralScore(const Image& source);

  /// `coded` has the source's size. A side below 8 pixels has no score and counts as 100.
  double of(const Image& coded) const;

 private:
  std::vector<Plane<float>> source_;  ///< the channels that the score needs, by scale
};

}  // namespace orvane
