#pragma once

#include "picture/ImageFormat.h"

namespace orvane::QualityCalibration {

/// The quality on the codec's own scale, 0…100, for a perceptual quality.
double codecQuality(double perceptual, ImageFormat format);

/// What the table of anchors alone says, before it is blended in: for a perceptual quality of 0…100
/// and JPEG, HEIC, AVIF or WebP; the same number for the formats that have no table.
double calibratedQuality(double perceptual, ImageFormat format);

}  // namespace orvane::QualityCalibration
