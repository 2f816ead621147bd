#pragma once

#include "picture/ImageFormat.h"

namespace orvane::QualityCalibration {

/// The quality on the codec's own scale, 0…100, for a perceptual quality.
double codecQuality(double perceptual, ImageFormat format);

/// The quality by the table of anchors alone, before blending. `perceptual` is 0…100. PNG and
/// JPEG XL have no column in the table and keep the perceptual number.
double calibratedQuality(double perceptual, ImageFormat format);

}  // namespace orvane::QualityCalibration
