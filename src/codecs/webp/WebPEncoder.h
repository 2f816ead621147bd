#pragma once

#include <webp/encode.h>

#include <optional>

#include "picture/EncodingPlan.h"
#include "picture/ImageCharacteristics.h"
#include "picture/RGBABuffer.h"

namespace orvane::WebPEncoder {

/// A WebP file, with the ICC profile of the buffer's space where it needs one.
/// Throws ImageProcessingError::encodingFailed.
Bytes encode(const RGBABuffer& rgba, const EncodingPlan& plan,
             const ImageCharacteristics& characteristics);

// The steps of `encode`, for it and its tests.

/// libwebp's settings for a plan. `hasAlpha` is the buffer's; the preset follows the
/// characteristics. Throws ImageProcessingError::encodingFailed.
WebPConfig configuration(const EncodingPlan& plan, bool hasAlpha,
                         const ImageCharacteristics& characteristics);

/// A file without profile. Throws ImageProcessingError::encodingFailed.
Bytes encodePicture(const RGBABuffer& rgba, const WebPConfig& config);

/// The file `to` with an ICCP chunk; no value when it cannot take one.
std::optional<Bytes> attach(ByteView icc, ByteView to);

}  // namespace orvane::WebPEncoder
