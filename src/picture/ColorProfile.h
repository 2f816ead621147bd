#pragma once

#include <optional>

#include "platform/foundation/Bytes.h"
#include "platform/graphics/ColorSpace.h"

namespace orvane::ColorProfile {

/// The ICC profile that the tool's own encoders embed for `colorSpace`: none for sRGB and extended
/// sRGB (what readers assume), the space's own otherwise, none when it has none. The view lives as
/// long as the colour space.
std::optional<ByteView> embeddableICC(const ColorSpace& colorSpace);

}  // namespace orvane::ColorProfile
