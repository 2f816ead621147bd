#include "codecs/ImageLimits.h"

#include "codecs/UnreadableImage.h"
#include "platform/foundation/Memory.h"

namespace orvane::ImageLimits {

void check(std::uint64_t width, std::uint64_t height, std::size_t bytesPerPixel) {
  if (width == 0 || height == 0) throw UnreadableImage("an empty picture");
  if (width > maximumSide || height > maximumSide) throw UnreadableImage("a side is too long");
  if (width * height > maximumPixels) throw UnreadableImage("too many pixels");
  if (width * height * bytesPerPixel > Memory::usable() / 2)
    throw UnreadableImage("too many bytes");
}

void checkICC(std::size_t bytes) {
  if (bytes > maximumICCBytes) throw UnreadableImage("a colour profile is too large");
}

}  // namespace orvane::ImageLimits
