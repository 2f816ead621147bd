#include "picture/ColorProfile.h"

namespace orvane::ColorProfile {

std::optional<ByteView> embeddableICC(const ColorSpace& colorSpace) {
  const auto name = colorSpace.name();
  if (name == ColorSpace::sRGBName || name == ColorSpace::extendedSRGBName) return std::nullopt;
  const ByteView profile = colorSpace.iccData();
  if (profile.empty()) return std::nullopt;
  return profile;
}

}  // namespace orvane::ColorProfile
