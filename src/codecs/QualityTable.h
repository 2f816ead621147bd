#pragma once

#include <span>

namespace orvane {

/// One point of a format's table. A quality means the same look in every format.
struct QualityPoint {
  double quality;  ///< 0…1
  double setting;  ///< the encoder's own, or the score of samples coded with it
};

/// The tables, rising in quality, the first at 0 and the last at 1. `bench/calibrate` measures and
/// rewrites them. A generation of a library that needs other settings has a table of its own.
namespace QualityTables {

std::span<const QualityPoint> jpegStepScale();

/// libaom's quantizer, 0…63.
std::span<const QualityPoint> avifQuantizer();
std::span<const QualityPoint> avifQuantizerTunedForImages();  ///< libaom 3.12 on

/// x265's constant rate factor.
std::span<const QualityPoint> heicRateFactor();

/// The mean scores, below 100, of samples of photographs (see SampleScore) at these settings.
std::span<const QualityPoint> jpegSampleScore();
std::span<const QualityPoint> avifSampleScore();
std::span<const QualityPoint> avifSampleScoreTunedForImages();
std::span<const QualityPoint> heicSampleScore();

}  // namespace QualityTables

/// Interpolates between the two nearest points. Qualities outside 0…1 are clamped; NaN counts as 0.
double settingAt(std::span<const QualityPoint> table, double quality);

/// The inverse. Settings outside the table are clamped; NaN gives the first quality.
double qualityAt(std::span<const QualityPoint> table, double setting);

}  // namespace orvane
