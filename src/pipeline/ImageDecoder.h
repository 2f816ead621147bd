#pragma once

#include <memory>
#include <optional>

#include "codecs/ImageSource.h"
#include "picture/ImageFormat.h"
#include "platform/foundation/Bytes.h"
#include "platform/graphics/Image.h"

namespace orvane::ImageDecoder {

struct DecodedImage {
  ImageFormat format;  ///< of the source, by its content
  Image image;         ///< upright
  std::size_t frameCount;
};

/// Reads the header of a file, which must outlive the source.
/// Throws ImageProcessingError::decodingFailed.
std::unique_ptr<ImageSource> open(ByteView fileData);

/// Decodes the first picture and turns it upright. A picture of linear light comes with sRGB's
/// curve, in 16 bits. Throws ImageProcessingError::decodingFailed.
DecodedImage decode(ImageSource& source);

/// Both of these.
DecodedImage decodeImageSource(ByteView fileData);

/// Redraws `image`, stored in EXIF orientation 2…8, upright. Absent for any other number and when
/// there is no memory for the redrawn picture.
std::optional<Image> applyOrientation(int orientation, const Image& image);

}  // namespace orvane::ImageDecoder
