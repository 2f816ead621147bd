#pragma once

#include "picture/EncodingPlan.h"
#include "picture/ImageCharacteristics.h"
#include "picture/ImageFormat.h"

namespace orvane::EncodingStrategy {

/// Turns one perceptual quality (0…100; other values are clamped) into a plan for `format`.
EncodingPlan plan(const ImageCharacteristics& characteristics, ImageFormat format,
                  double perceptualQuality);

}  // namespace orvane::EncodingStrategy
