#pragma once

#include "picture/EncodingPlan.h"
#include "picture/ImageCharacteristics.h"
#include "picture/RGBABuffer.h"

namespace orvane::WebPEncoder {

/// A WebP file, with the ICC profile of the buffer's space where it needs one.
/// Throws ImageProcessingError::encodingFailed.
Bytes encode(const RGBABuffer& rgba, const EncodingPlan& plan,
             const ImageCharacteristics& characteristics);

}  // namespace orvane::WebPEncoder
