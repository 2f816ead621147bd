#include "platform/imageio/HEICSettings.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace orvane::HEICSettings {
namespace {

struct Setting {
  double quality;
  double rateFactor;
};

constexpr std::array settings{
    Setting{0.00, 46.0}, Setting{0.30, 37.0}, Setting{0.50, 33.0}, Setting{0.75, 28.0},
    Setting{0.85, 25.0}, Setting{0.95, 18.0}, Setting{1.00, 14.0},
};

}  // namespace

double rateFactor(double quality) {
  const auto above = std::ranges::upper_bound(settings, quality, {}, &Setting::quality);
  if (above == settings.begin()) return settings.front().rateFactor;
  if (above == settings.end()) return settings.back().rateFactor;
  const Setting& below = *std::prev(above);
  const double part = (quality - below.quality) / (above->quality - below.quality);
  return below.rateFactor + part * (above->rateFactor - below.rateFactor);
}

}  // namespace orvane::HEICSettings
