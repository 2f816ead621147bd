#include "pipeline/ImageDecoder.h"

#include <memory>
#include <new>

#include "codecs/ImageLimits.h"
#include "codecs/ImageSource.h"
#include "picture/ImageProcessingError.h"
#include "platform/graphics/GammaEncode.h"
#include "platform/graphics/Orient.h"

namespace orvane::ImageDecoder {
namespace {

/// Decodes the first picture, not turned yet, into a space that 8 bits are enough for.
Image storedImage(ImageSource& source) {
  Image image = source.image();
  if (!image.colorSpace->isLinear()) return image;
  constexpr std::size_t encodedBytesPerPixel = 8;
  ImageLimits::check(image.width, image.height, encodedBytesPerPixel);
  return gammaEncode(image);
}

}  // namespace

std::optional<Image> applyOrientation(int orientation, const Image& image) try {
  if (!isTurned(orientation)) return std::nullopt;
  return orient(image, orientation);
} catch (const std::bad_alloc&) {
  return std::nullopt;
}

std::unique_ptr<ImageSource> open(ByteView fileData) try {
  return ImageSource::create(fileData);
} catch (const UnreadableImage&) {
  throw ImageProcessingError::decodingFailed();
} catch (const std::bad_alloc&) {
  throw ImageProcessingError::decodingFailed();
}

DecodedImage decode(ImageSource& source) try {
  const auto format = ImageFormat::fromTypeIdentifier(source.typeIdentifier());
  if (!format) throw ImageProcessingError::decodingFailed();
  DecodedImage decoded{*format, storedImage(source), source.frameCount()};
  if (auto upright = applyOrientation(source.orientation(), decoded.image)) {
    decoded.image = std::move(*upright);
  }
  return decoded;
} catch (const UnreadableImage&) {
  throw ImageProcessingError::decodingFailed();
} catch (const std::bad_alloc&) {
  throw ImageProcessingError::decodingFailed();
}

DecodedImage decodeImageSource(ByteView fileData) { return decode(*open(fileData)); }

}  // namespace orvane::ImageDecoder
