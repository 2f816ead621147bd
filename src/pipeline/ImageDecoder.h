#pragma once

#include <optional>

#include "picture/ImageFormat.h"
#include "platform/foundation/Bytes.h"
#include "platform/graphics/Image.h"

namespace orvane::ImageDecoder {

struct DecodedImage {
  ImageFormat format;  ///< of the source, by its content
  Image image;         ///< upright
  std::size_t frameCount;
};

/// Decodes the first picture of a file and turns it upright. Linear light gets sRGB's curve, in 16
/// bits. Throws ImageProcessingError::decodingFailed.
DecodedImage decodeImageSource(ByteView fileData);

/// Redraws `image`, stored in EXIF orientation 2…8, upright. Absent for any other number and when
/// there is no memory for the redrawn picture.
std::optional<Image> applyOrientation(int orientation, const Image& image);

}  // namespace orvane::ImageDecoder
