#pragma once

#include <webp/encode.h>

#include <optional>

#include "picture/EncodingPlan.h"
#include "picture/ImageCharacteristics.h"
#include "picture/RGBABuffer.h"

/// The steps of WebPEncoder::encode, declared for its tests.
namespace orvane::WebPEncoder {

/// libwebp's settings for a plan. `hasAlpha` is the buffer's; the preset follows the
/// characteristics. Throws ImageProcessingError::encodingFailed.
WebPConfig configuration(const EncodingPlan& plan, bool hasAlpha,
                         const ImageCharacteristics& characteristics);

/// A file without profile. Throws ImageProcessingError::encodingFailed.
Bytes encodePicture(const RGBABuffer& rgba, const WebPConfig& config);

/// The file `to` with an ICCP chunk, or nothing when libwebpmux cannot add one.
std::optional<Bytes> attach(ByteView icc, ByteView to);

}  // namespace orvane::WebPEncoder
