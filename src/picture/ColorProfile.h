#pragma once

#include <optional>

#include "platform/foundation/Bytes.h"
#include "platform/graphics/ColorSpace.h"

namespace orvane::ColorProfile {

/// The ICC profile that the tool's own encoders embed for `colorSpace`: the space's own, but none
/// for sRGB and extended sRGB, which readers assume. The view lives as long as the colour space.
std::optional<ByteView> embeddableICC(const ColorSpace& colorSpace);

}  // namespace orvane::ColorProfile
