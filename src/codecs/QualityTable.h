#pragma once

#include <span>

namespace orvane {

/// From a quality that means the same look in every format to one encoder's own setting.
struct QualityPoint {
  double quality;  ///< 0…1
  double setting;
};

/// The tables, rising in quality, the first at 0 and the last at 1. `bench/calibrate` measures and
/// rewrites them; there is one for each generation of a library that asks for other settings.
namespace QualityTables {

std::span<const QualityPoint> jpegStepScale();

/// libaom's quantizer, 0…63.
std::span<const QualityPoint> avifQuantizer();
std::span<const QualityPoint> avifQuantizerTunedForImages();  ///< libaom 3.12 on

/// x265's constant rate factor.
std::span<const QualityPoint> heicRateFactor();

}  // namespace QualityTables

/// The setting on the straight line between the two nearest points; qualities outside 0…1 count as
/// the nearest, and so does one that is not a number as 0.
double settingAt(std::span<const QualityPoint> table, double quality);

}  // namespace orvane
