#include "codecs/TransformativeProperties.h"

#include <utility>

#include "codecs/UnreadableImage.h"

namespace orvane {
namespace {

struct Range {
  std::int64_t start, length;
};

/// The part of a side of `side` pixels that an aperture keeps.
Range rangeOf(std::int64_t side, CleanAperture::Fraction length, CleanAperture::Fraction offset) {
  const auto number = [](std::uint32_t stored) -> std::int64_t {
    return static_cast<std::int32_t>(stored);
  };
  const std::int64_t offsetDenominator = number(offset.denominator);
  if (number(length.numerator) <= 0 || number(length.denominator) <= 0 || offsetDenominator <= 0) {
    throw UnreadableImage("a broken crop");
  }
  const std::int64_t kept = number(length.numerator) / number(length.denominator);
  const std::int64_t doubleStart =  // in units of 1 / (2 · offsetDenominator)
      (side - kept) * offsetDenominator + 2 * number(offset.numerator);
  const std::int64_t start = doubleStart / (2 * offsetDenominator);
  if (kept == 0 || doubleStart < 0 || start + kept > side) {
    throw UnreadableImage("a crop outside of the picture");
  }
  return {start, kept};
}

}  // namespace

TransformativeProperties::TransformativeProperties(std::size_t width, std::size_t height)
    : kept_{0, 0, static_cast<std::int64_t>(width), static_cast<std::int64_t>(height)} {}

void TransformativeProperties::crop(const CleanAperture& aperture) {
  const Range x = rangeOf(shownWidth(), aperture.width, aperture.right);
  const Range y = rangeOf(shownHeight(), aperture.height, aperture.down);
  const Rectangle part = asStored({x.start, y.start, x.length, y.length});
  kept_ = {kept_.left + part.left, kept_.top + part.top, part.width, part.height};
}

/// A rectangle of the shown picture as one of the part that is kept: the mirror image and the turns
/// taken back.
TransformativeProperties::Rectangle TransformativeProperties::asStored(Rectangle shown) const {
  std::int64_t width = shownWidth();
  std::int64_t height = shownHeight();
  if (isMirrored_) shown.left = width - shown.left - shown.width;
  for (int turned = 0; turned < quarters_; ++turned) {  // each taken back by one clockwise
    shown = {height - shown.top - shown.height, shown.left, shown.height, shown.width};
    std::swap(width, height);
  }
  return shown;
}

void TransformativeProperties::turn(int quarters) {
  // A turn after a mirror image is the opposite turn before it.
  quarters_ = (quarters_ + (isMirrored_ ? 4 - quarters : quarters)) % 4;
}

void TransformativeProperties::mirror(Mirror exchanged) {
  isMirrored_ = !isMirrored_;
  // To exchange top and bottom is to exchange left and right and to turn by 180°.
  if (exchanged == Mirror::topBottom) turn(2);
}

int TransformativeProperties::orientation() const {
  constexpr int unmirrored[]{1, 8, 3, 6};
  constexpr int mirrored[]{2, 7, 4, 5};
  return isMirrored_ ? mirrored[quarters_] : unmirrored[quarters_];
}

Image TransformativeProperties::cropped(Image image) const {
  const auto left = static_cast<std::size_t>(kept_.left);
  const auto top = static_cast<std::size_t>(kept_.top);
  image.pixels = PixelMemory(image.pixels, image.row(top) + left * image.bytesPerPixel());
  image.width = static_cast<std::size_t>(kept_.width);
  image.height = static_cast<std::size_t>(kept_.height);
  return image;
}

}  // namespace orvane
