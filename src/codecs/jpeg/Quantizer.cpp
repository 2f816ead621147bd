#include "codecs/jpeg/Quantizer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace orvane {
namespace {

/// The worth of a bit, in squared errors of the lowest frequencies' step.
constexpr double lumaLambda = 0.18;
constexpr double chromaLambda = 0.047;

/// Lowering a level saves this many bits: a 1 that becomes 0 saves its run, too.
constexpr float bitsOfOne = 4.5F;
constexpr float bitsOfLength = 3;

/// `step` in units of that of the lowest frequencies.
double errorWeight(double step, double lambda) { return 2 * step * step / lambda; }

double frequency(std::size_t i) { return std::hypot(i % 8, i / 8); }

/// Rounds to 65536ths: the last digits of std::pow, std::exp and std::hypot differ between
/// processors, and a file must not.
double rounded(double sensitivity) { return std::round(sensitivity * 65536) / 65536; }

/// How much less an error counts the faster it alternates.
double fineSensitivity(double frequency) {
  return rounded(1 / std::pow(1 + 2.1 * std::pow(frequency / 7, 1.5), 2));
}
double coarseSensitivity(double frequency) {
  return rounded(0.7 * std::exp(-frequency * frequency / 1.69));
}

/// The range of eight-bit pictures' levels (ITU-T T.81, F.1.2). That of means reaches one further
/// down.
constexpr int largestLevel = 1023;

}  // namespace

Quantizer::Quantizer(const JPEGSettings::Steps& steps) {
  for (std::size_t i = 0; i < 64; ++i) {
    steps_[i] = static_cast<float>(steps[i]);
    reciprocals_[i] = 1 / steps_[i];
  }
}

Quantizer Quantizer::forLuma(const JPEGSettings& settings) {
  Quantizer result(settings.lumaSteps);
  for (std::size_t i = 0; i < 64; ++i) {
    const double weight = errorWeight(settings.lumaSteps[i] / settings.lumaScale, lumaLambda);
    result.fineWeights_[i] = static_cast<float>(weight * fineSensitivity(frequency(i)));
    result.coarseWeights_[i] = static_cast<float>(weight * coarseSensitivity(frequency(i)));
  }
  return result;
}

Quantizer Quantizer::forChroma(const JPEGSettings& settings) {
  Quantizer result(settings.chromaSteps);
  for (std::size_t i = 0; i < 64; ++i) {
    const double weight = errorWeight(settings.chromaSteps[i] / settings.chromaScale, chromaLambda);
    result.fineWeights_[i] = static_cast<float>(weight * fineSensitivity(frequency(i)));
  }
  return result;
}

void Quantizer::quantize(const Block& coefficients, ErrorVisibility visibility,
                         std::int16_t* levels) const {
  for (std::size_t i = 0; i < 64; ++i) {
    const float value = coefficients[i] * reciprocals_[i];
    const float magnitude = std::abs(value);
    const auto rounded = static_cast<std::int32_t>(magnitude + 0.5F);
    const float saving =
        1 / (visibility.fine * fineWeights_[i] + visibility.coarse * coarseWeights_[i]);
    const float margin = saving * (rounded == 1 ? bitsOfOne : bitsOfLength);
    const bool isPowerOfTwo = (rounded & (rounded - 1)) == 0;
    const bool isNearBelow = magnitude < static_cast<float>(rounded) - 0.5F + margin;
    // Without branches, so that compilers take several coefficients at once.
    const int lowered = rounded - (int{isPowerOfTwo} & int{isNearBelow} & int{rounded > 0});
    const int level = std::min(lowered, largestLevel);
    levels[i] = static_cast<std::int16_t>(value < 0 ? -level : level);
  }
  levels[0] = static_cast<std::int16_t>(std::clamp(std::lrint(coefficients[0] * reciprocals_[0]),
                                                   -largestLevel - 1L, long{largestLevel}));
}

Block Quantizer::restore(const std::int16_t* levels) const {
  Block coefficients;
  for (std::size_t i = 0; i < 64; ++i) {
    coefficients[i] = static_cast<float>(levels[i]) * steps_[i];
  }
  return coefficients;
}

}  // namespace orvane
