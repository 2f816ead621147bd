#pragma once

#include "pipeline/EncodingPlan.h"
#include "pipeline/ImageCharacteristics.h"
#include "pipeline/ImageFormat.h"

namespace orvane::EncodingStrategy {

/// Turns one perceptual quality (0…100; anything beyond is clamped) into a plan for `format`.
EncodingPlan plan(const ImageCharacteristics& characteristics, ImageFormat format,
                  double perceptualQuality);

}  // namespace orvane::EncodingStrategy
