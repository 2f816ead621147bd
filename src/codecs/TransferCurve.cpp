#include "codecs/TransferCurve.h"

#include <cmath>

namespace orvane {
namespace {

double numberOf(double light) {
  return light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

double slopeAt(double number) {
  return number <= 0.04045 ? 1 / 12.92 : 2.4 / 1.055 * std::pow((number + 0.055) / 1.055, 1.4);
}

/// Rounds to 4096ths.
float rounded(double value) { return static_cast<float>(std::round(value * 4096) / 4096); }

}  // namespace

TransferCurve::TransferCurve() {
  for (std::size_t i = 0; i < light_.size(); ++i) {
    const double number = static_cast<double>(i) / 255;
    light_[i] = static_cast<std::uint16_t>(std::lround(lightOf(number) * lightSum / 4));
    slopes_[i] = rounded(slopeAt(number));
  }
  // An entry stands for the sums up to the next one.
  for (std::size_t i = 0; i < number_.size(); ++i) {
    const double steps = static_cast<double>(number_.size() - 1);
    const double middle = i == 0 || i + 1 == number_.size() ? 0 : 0.5;
    number_[i] = rounded(255 * numberOf((static_cast<double>(i) + middle) / steps));
  }
}

double TransferCurve::lightOf(double number) {
  return number <= 0.04045 ? number / 12.92 : std::pow((number + 0.055) / 1.055, 2.4);
}

const TransferCurve& TransferCurve::sRGB() {
  static const TransferCurve curve;
  return curve;
}

}  // namespace orvane
