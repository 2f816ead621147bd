#include "pipeline/NativeImageIOEncoder.h"

#include <new>
#include <optional>

#include "codecs/ImageDestination.h"
#include "picture/ImageProcessingError.h"
#include "platform/foundation/Precondition.h"
#include "platform/graphics/BitmapContext.h"

namespace orvane::NativeImageIOEncoder {
namespace {

enum class Backdrop { none, white };

/// An alpha-free 8-bit copy, composed over `backdrop`; nothing when it cannot be made. A picture
/// that is its own copy already shares its memory.
std::optional<Image> opaqueCopy(const Image& image, Backdrop backdrop) try {
  if (isOpaqueRendering(image)) return image;
  auto context =
      BitmapContext::create(image.width, image.height, 8, BitmapContext::Alpha::noneSkipLast,
                            renderingSpace(image.colorSpace));
  if (!context) return std::nullopt;
  if (backdrop == Backdrop::white) context->fillWhite();
  context->draw(image);
  return std::move(*context).makeImage();
} catch (const std::bad_alloc&) {
  return std::nullopt;
}

/// 0…1 for the destination. Readers of AVIF never get the maximum setting.
double destinationQuality(double codecQuality, ImageFormat format) {
  const double quality = codecQuality / 100;
  if (!(quality > 0)) return 0;
  const double highest = format == ImageFormat::avif ? 0.99 : 1.0;
  return quality >= 1 ? highest : quality;
}

}  // namespace

Bytes encode(const Image& image, bool hasAlpha, ImageFormat format, const EncodingPlan& plan) {
  precondition(format == ImageFormat::jpeg || format == ImageFormat::heic ||
               format == ImageFormat::avif);
  const auto* lossy = std::get_if<EncodingPlan::Lossy>(&plan.mode);
  const ImageDestination* destination = ImageDestination::forType(format.typeIdentifier());
  if (lossy == nullptr || destination == nullptr) {
    throw ImageProcessingError::encodingFailed(format);
  }
  std::optional<Image> copy;
  if (!hasAlpha || format == ImageFormat::jpeg) {
    copy = opaqueCopy(image, hasAlpha ? Backdrop::white : Backdrop::none);
  }
  try {
    return destination->encode(copy ? *copy : image, destinationQuality(lossy->quality, format));
  } catch (const UnwritableImage&) {
    throw ImageProcessingError::encodingFailed(format);
  } catch (const std::bad_alloc&) {
    throw ImageProcessingError::encodingFailed(format);
  }
}

}  // namespace orvane::NativeImageIOEncoder
