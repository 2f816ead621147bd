#include "pipeline/NativeImageIOEncoder.h"

#include <new>
#include <optional>

#include "codecs/ImageDestination.h"
#include "codecs/look/Look.h"
#include "picture/ImageProcessingError.h"
#include "platform/foundation/Precondition.h"
#include "platform/graphics/Flatten.h"

namespace orvane::NativeImageIOEncoder {
namespace {

/// An alpha-free 8-bit copy; absent when there is no memory for it.
std::optional<Image> opaqueCopy(const Image& image, Backdrop backdrop) try {
  return flatten(image, backdrop);
} catch (const std::bad_alloc&) {
  return std::nullopt;
}

/// The codec quality, 0…100, as 0…1; NaN becomes 0.
double destinationQuality(double codecQuality, const ImageDestination& destination) {
  const double quality = codecQuality / 100;
  if (!(quality > 0)) return 0;
  return quality < 1 ? quality : destination.maximumQuality;
}

/// The picture that is added to the destination.
Image encodedImage(const Image& image, bool hasAlpha, const ImageDestination& destination) {
  if (hasAlpha && destination.alpha == ImageDestination::Alpha::kept) return image;
  return opaqueCopy(image, hasAlpha ? Backdrop::white : Backdrop::none).value_or(image);
}

}  // namespace

Bytes encode(const Image& image, bool hasAlpha, ImageFormat format, const EncodingPlan& plan,
             const ImageCharacteristics& characteristics) try {
  const ImageDestination* destination = ImageDestination::of(format);
  precondition(destination != nullptr);
  const auto* lossy = std::get_if<EncodingPlan::Lossy>(&plan.mode);
  if (lossy == nullptr) throw ImageProcessingError::encodingFailed(format);
  const Image encoded = encodedImage(image, hasAlpha, *destination);
  const PictureMeasurements measurements = measure(encoded, characteristics);
  const double quality = destinationQuality(lossy->quality, *destination);
  return destination->encode(encoded, measurements,
                             qualityForLook(*destination, encoded, measurements, quality),
                             plan.threads);
} catch (const UnwritableImage&) {
  throw ImageProcessingError::encodingFailed(format);
}

}  // namespace orvane::NativeImageIOEncoder
