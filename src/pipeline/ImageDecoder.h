#pragma once

#include <optional>

#include "picture/ImageFormat.h"
#include "platform/foundation/Bytes.h"
#include "platform/graphics/Image.h"

namespace orvane::ImageDecoder {

struct DecodedImage {
  ImageFormat format;  ///< of the source, told by its content
  Image image;         ///< upright
  std::size_t frameCount;
};

/// Decodes the first picture of a file and turns it upright. A picture of linear light comes with
/// sRGB's curve, in 16 bits.
/// Throws ImageProcessingError::decodingFailed.
DecodedImage decodeImageSource(ByteView fileData);

/// `image` redrawn as EXIF orientation 2…8 asks; nothing for any other number, or when the
/// redrawing cannot be done.
std::optional<Image> applyOrientation(int orientation, const Image& image);

}  // namespace orvane::ImageDecoder
