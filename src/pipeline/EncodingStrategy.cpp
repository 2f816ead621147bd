#include "pipeline/EncodingStrategy.h"

#include <cstdint>
#include <cstdlib>
#include <variant>

#include "pipeline/QualityCalibration.h"

namespace orvane::EncodingStrategy {
namespace {

constexpr std::int64_t maximumThoroughPixels = 2'000'000;
constexpr std::int64_t maximumBalancedPixels = 12'000'000;

/// Ends the process on overflow: ImageLimits keeps every picture far below it.
std::int64_t pixelCount(const ImageCharacteristics& characteristics) {
  std::int64_t pixels = 0;
  if (__builtin_mul_overflow(characteristics.width, characteristics.height, &pixels)) std::abort();
  return pixels;
}

/// Whether a format uses its lossless mode for a picture.
bool isBestLossless(const ImageCharacteristics& characteristics, double quality) {
  return characteristics.contentClass == ContentClass::flatGraphic ||
         (characteristics.contentClass == ContentClass::screenContent &&
          characteristics.flatFraction > 0.55 && quality >= 97);
}

EncodingPlan::Mode mode(const ImageCharacteristics& characteristics, ImageFormat format,
                        double quality) {
  const EncodingPlan::Lossy lossy{QualityCalibration::codecQuality(quality, format)};
  switch (format) {
    case ImageFormat::png:
    case ImageFormat::jpeg:
    case ImageFormat::heic:
    case ImageFormat::avif:
      return lossy;
    case ImageFormat::webp:
      if (isBestLossless(characteristics, quality)) return EncodingPlan::Lossless{};
      if (characteristics.contentClass == ContentClass::screenContent && quality >= 85) {
        return EncodingPlan::NearLossless{60};
      }
      return lossy;
    case ImageFormat::jxl:
      if (isBestLossless(characteristics, quality)) return EncodingPlan::Lossless{};
      return lossy;
  }
  return lossy;
}

/// To 1…100; NaN is 100.
double effectiveQuality(double perceptualQuality, ContentClass contentClass) {
  const double quality =
      contentClass == ContentClass::detailedPhoto ? perceptualQuality - 4 : perceptualQuality;
  if (quality < 1) return 1;
  return quality < 100 ? quality : 100;
}

bool prefersLossless(const ImageCharacteristics& characteristics, double quality) {
  return quality >= 95 || (quality >= 85 && characteristics.uniqueColorsCapped &&
                           isPhotograph(characteristics.contentClass));
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

/// When a second attempt is worth its time, and in which mode.
struct SecondAttempt {
  std::int64_t maximumPixels;
  bool firstIsLossless;
  bool losslessMayBeSmaller;  ///< read only when the first attempt is lossy
};

SecondAttempt secondAttempt(const EncodingPlan& plan, const ImageCharacteristics& characteristics,
                            ImageFormat format) {
  switch (format) {
    case ImageFormat::png:
      return {500'000, plan.preferLossless, characteristics.noiseLevel < 6};
    case ImageFormat::webp:
    case ImageFormat::jxl:
      return {4'000'000, std::holds_alternative<EncodingPlan::Lossless>(plan.mode),
              characteristics.contentClass == ContentClass::screenContent ||
                  characteristics.contentClass == ContentClass::illustration};
    case ImageFormat::jpeg:
    case ImageFormat::heic:
    case ImageFormat::avif:
      break;
  }
  constexpr std::int64_t never = -1;
  return {never, false, false};
}

void planSecondAttempt(EncodingPlan& plan, const ImageCharacteristics& characteristics,
                       ImageFormat format, std::int64_t pixels) {
  const SecondAttempt attempt = secondAttempt(plan, characteristics, format);
  if (pixels > attempt.maximumPixels) {
    plan.singlePass = true;
  } else if (attempt.firstIsLossless) {
    plan.losslessQuality = QualityCalibration::codecQuality(plan.quality, format);
  } else {
    plan.losslessCandidate = attempt.losslessMayBeSmaller;
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
