#pragma once

#include "pipeline/ImageFormat.h"

namespace orvane::QualityCalibration {

/// The quality on the codec's own scale, 0…100, for a perceptual quality.
double codecQuality(double perceptual, ImageFormat format);

}  // namespace orvane::QualityCalibration
