#include "pipeline/EncodingStrategy.h"

#include <cstdint>
#include <cstdlib>
#include <variant>

#include "pipeline/QualityCalibration.h"

namespace orvane::EncodingStrategy {
namespace {

constexpr std::int64_t maximumThoroughPixels = 2'000'000;
constexpr std::int64_t maximumBalancedPixels = 12'000'000;

/// Overflow is a mistake in this program and ends it.
std::int64_t pixelCount(const ImageCharacteristics& characteristics) {
  std::int64_t pixels = 0;
  if (__builtin_mul_overflow(characteristics.width, characteristics.height, &pixels)) std::abort();
  return pixels;
}

EncodingPlan::Mode mode(const ImageCharacteristics& characteristics, ImageFormat format,
                        double quality) {
  if (format == ImageFormat::png) return EncodingPlan::Lossy{quality};
  if (format == ImageFormat::webp || format == ImageFormat::jxl) {
    const bool isScreen = characteristics.contentClass == ContentClass::screenContent;
    if (characteristics.contentClass == ContentClass::flatGraphic) return EncodingPlan::Lossless{};
    if (quality >= 97 && isScreen && characteristics.flatFraction > 0.55) {
      return EncodingPlan::Lossless{};
    }
    if (format == ImageFormat::webp && isScreen && quality >= 85) {
      return EncodingPlan::NearLossless{60};
    }
  }
  return EncodingPlan::Lossy{QualityCalibration::codecQuality(quality, format)};
}

/// To 1…100. What is not a number asks for the most.
double effectiveQuality(double perceptualQuality, ContentClass contentClass) {
  const double quality =
      contentClass == ContentClass::detailedPhoto ? perceptualQuality - 4 : perceptualQuality;
  if (quality < 1) return 1;
  return quality < 100 ? quality : 100;
}

bool prefersLossless(const ImageCharacteristics& characteristics, double quality) {
  return quality >= 95 || (quality >= 85 && characteristics.uniqueColorsCapped &&
                           characteristics.contentClass >= ContentClass::photo);
}

EncodingPlan::Effort effort(std::int64_t pixels) {
  if (pixels <= maximumThoroughPixels) return EncodingPlan::Effort::thorough;
  if (pixels <= maximumBalancedPixels) return EncodingPlan::Effort::balanced;
  return EncodingPlan::Effort::fast;
}

float ditheringLevel(const ImageCharacteristics& characteristics) {
  if (characteristics.gradientFraction < 0.05 &&
      characteristics.contentClass == ContentClass::flatGraphic) {
    return 0.2F;
  }
  return characteristics.gradientFraction > 0.25 ? 1.0F : 0.7F;
}

/// Up to that many pixels a second attempt is worth its time.
std::int64_t maximumSecondAttemptPixels(ImageFormat format) {
  switch (format) {
    case ImageFormat::png:
      return 500'000;
    case ImageFormat::webp:
    case ImageFormat::jxl:
      return 4'000'000;
    case ImageFormat::jpeg:
    case ImageFormat::heic:
    case ImageFormat::avif:
      return -1;
  }
  return -1;
}

/// Lossless pictures are tried lossy, and lossy ones lossless where that could come out smaller.
void planSecondAttempt(EncodingPlan& plan, const ImageCharacteristics& characteristics,
                       ImageFormat format, std::int64_t pixels) {
  const bool isPNG = format == ImageFormat::png;
  const bool startsLossless =
      isPNG ? plan.preferLossless : std::holds_alternative<EncodingPlan::Lossless>(plan.mode);
  if (pixels > maximumSecondAttemptPixels(format)) {
    plan.singlePass = true;
  } else if (startsLossless) {
    plan.losslessQuality = QualityCalibration::codecQuality(plan.quality, format);
  } else {
    plan.losslessCandidate = isPNG ? characteristics.noiseLevel < 6
                                   : characteristics.contentClass == ContentClass::screenContent ||
                                         characteristics.contentClass == ContentClass::illustration;
    plan.singlePass = !plan.losslessCandidate;
  }
}

}  // namespace

EncodingPlan plan(const ImageCharacteristics& characteristics, ImageFormat format,
                  double perceptualQuality) {
  const std::int64_t pixels = pixelCount(characteristics);
  const double quality = effectiveQuality(perceptualQuality, characteristics.contentClass);
  EncodingPlan plan{.mode = mode(characteristics, format, quality),
                    .effort = effort(pixels),
                    .quality = quality,
                    .ditheringLevel = ditheringLevel(characteristics),
                    .preferLossless = prefersLossless(characteristics, quality)};
  planSecondAttempt(plan, characteristics, format, pixels);
  return plan;
}

}  // namespace orvane::EncodingStrategy
