#include "pipeline/QualityCalibration.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

namespace orvane::QualityCalibration {
namespace {

/// The share of the calibrated number in the result. It is 0 by design: the perceptual number is
/// used as it is, and this one constant switches the calibration on.
constexpr double blendWeight = 0.0;

constexpr std::size_t codecCount = 4;
using CodecValues = std::array<double, codecCount>;  ///< JPEG, HEIC, AVIF, WebP

struct Anchor {
  double perceptual;
  CodecValues codec;
};

/// By rising perceptual quality.
constexpr std::array<Anchor, 9> anchors{{
    {30, {30, 34, 48, 56}},
    {40, {40, 43, 58, 78}},
    {50, {50, 54, 68, 84}},
    {60, {60, 64, 77, 89}},
    {70, {70, 72, 85, 93}},
    {75, {75, 78, 88, 94}},
    {80, {80, 83, 89, 96}},
    {85, {85, 87, 92, 98}},
    {90, {90, 90, 93, 99}},
}};

/// Steps per 10 points above the last anchor, chosen so that every codec reaches 100 at 100.
constexpr CodecValues finalSlopes{10, 10, 7, 1};

std::optional<std::size_t> codecIndex(ImageFormat format) {
  switch (format) {
    case ImageFormat::jpeg:
      return 0;
    case ImageFormat::heic:
      return 1;
    case ImageFormat::avif:
      return 2;
    case ImageFormat::webp:
      return 3;
    case ImageFormat::png:
    case ImageFormat::jxl:
      return std::nullopt;
  }
  return std::nullopt;
}

/// Limits to 0…100; NaN becomes 0.
double clamped(double quality) { return quality > 0 ? std::min(quality, 100.0) : 0; }

}  // namespace

double calibratedQuality(double perceptual, ImageFormat format) {
  const std::optional<std::size_t> codec = codecIndex(format);
  if (!codec) return perceptual;
  const Anchor& first = anchors.front();
  const Anchor& last = anchors.back();
  if (perceptual <= first.perceptual) {
    return perceptual / first.perceptual * first.codec[*codec];
  }
  if (perceptual >= last.perceptual) {
    return last.codec[*codec] + (perceptual - last.perceptual) / 10 * finalSlopes[*codec];
  }
  const auto upper = std::ranges::lower_bound(anchors, perceptual, {}, &Anchor::perceptual);
  const auto lower = upper - 1;
  const double t = (perceptual - lower->perceptual) / (upper->perceptual - lower->perceptual);
  return lower->codec[*codec] + t * (upper->codec[*codec] - lower->codec[*codec]);
}

double codecQuality(double perceptual, ImageFormat format) {
  const double p = clamped(perceptual);
  const double calibrated = calibratedQuality(p, format);
  return clamped(p + (calibrated - p) * blendWeight);
}

}  // namespace orvane::QualityCalibration
