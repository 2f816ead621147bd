#pragma once

#include "picture/EncodingPlan.h"
#include "picture/ImageCharacteristics.h"
#include "picture/ImageFormat.h"
#include "platform/foundation/Bytes.h"
#include "platform/graphics/Image.h"

namespace orvane::NativeImageIOEncoder {

/// A JPEG, HEIC or AVIF file (no other `format`) of a picture. `hasAlpha`: some pixel is not
/// opaque; HEIC and AVIF keep it, JPEG shows white behind it. `characteristics` are the picture's.
/// Only lossy plans can be encoded. Throws ImageProcessingError::encodingFailed, std::bad_alloc.
Bytes encode(const Image& image, bool hasAlpha, ImageFormat format, const EncodingPlan& plan,
             const ImageCharacteristics& characteristics);

}  // namespace orvane::NativeImageIOEncoder
