#pragma once

#include <cstdint>

#include "platform/graphics/Image.h"

namespace orvane {

/// The fields of a clean aperture box (ISO/IEC 14496-12, 12.1.4) as they are stored: a size, and
/// the distance of its centre from the picture's centre, to the right and down. Pixels, as
/// fractions.
struct CleanAperture {
  struct Fraction {
    std::uint32_t numerator, denominator;  ///< two's complement
  };
  Fraction width, height, right, down;
};

/// The transformative properties of a picture (ISO/IEC 23008-12, 6.5.9, 6.5.10 and 6.5.12: clap,
/// irot, imir), added in the order in which they apply, as one crop of the stored picture and one
/// EXIF orientation after it.
class TransformativeProperties {
 public:
  /// None yet, for a stored picture of this size in pixels.
  TransformativeProperties(std::size_t width, std::size_t height);

  /// A crop that begins between two pixels begins at the first of them, and a fractional size loses
  /// its fraction. Throws UnreadableImage when the crop is empty or reaches outside of the picture.
  void crop(const CleanAperture& aperture);

  /// Turns by 90° anti-clockwise, 0…3 times.
  void turn(int quarters);

  enum class Mirror : std::uint8_t { topBottom, leftRight };
  void mirror(Mirror exchanged);

  /// 1…8.
  int orientation() const;

  /// The part of the stored picture that is shown, not turned. Shares the pixels of `image`, which
  /// has the size that the constructor was told.
  Image cropped(Image image) const;

 private:
  struct Rectangle {
    std::int64_t left, top, width, height;
  };
  Rectangle asStored(Rectangle shown) const;
  std::int64_t shownWidth() const { return quarters_ % 2 == 0 ? kept_.width : kept_.height; }
  std::int64_t shownHeight() const { return quarters_ % 2 == 0 ? kept_.height : kept_.width; }

  Rectangle kept_;  ///< in the stored picture
  int quarters_ = 0;
  bool isMirrored_ = false;  ///< left and right are exchanged, after the turn
};

}  // namespace orvane
