#pragma once

#include <cstdint>

namespace orvane {

/// The kind of a picture. Planning tests ranges, so the order of the cases counts.
enum class ContentClass : std::uint8_t {
  flatGraphic,    ///< few colours, mostly flat areas: icons, logos
  screenContent,  ///< large flat areas with hard edges: screenshots, text
  illustration,   ///< smooth, low-noise drawings and gradients
  photo,          ///< photographic content
  detailedPhoto,  ///< photographic content with strong fine detail or noise
};

constexpr bool isPhotograph(ContentClass contentClass) {
  return contentClass >= ContentClass::photo;
}

/// Statistics of a sparse grid of samples of one picture, and the class drawn from them.
struct ImageCharacteristics {
  std::int64_t width = 0;   ///< pixels
  std::int64_t height = 0;  ///< pixels
  ContentClass contentClass = ContentClass::photo;
  std::int64_t uniqueColorCount = 0;    ///< distinct RGB triples; counting stops at 16384
  bool uniqueColorsCapped = false;      ///< counting stopped
  double flatFraction = 0;              ///< 0…1: luma gradient exactly 0
  double edgeFraction = 0;              ///< 0…1: luma gradient of 24 or more
  double gradientFraction = 0;          ///< 0…1: luma gradient in 0.5…4.0
  double noiseLevel = 0;                ///< mean absolute Laplacian of luma outside edges
  bool hasAlpha = false;                ///< the buffer's
  bool hasPartialTransparency = false;  ///< some sampled alpha is neither 0 nor 255

  bool operator==(const ImageCharacteristics&) const = default;
};

}  // namespace orvane
