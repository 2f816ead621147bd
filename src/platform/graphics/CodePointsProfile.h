#pragma once

#include "platform/graphics/CodePoints.h"
#include "platform/graphics/ICCProfile.h"

namespace orvane {

/// The RGB profile that says what the code points say, or null where they say nothing that a
/// profile can (unspecified, reserved and XYZ primaries).
ProfileHandle makeProfile(CodePoints codePoints);

/// From coded value to linear light for H.273 transfer characteristics (table 3), or null.
ToneCurveHandle decodingCurve(std::uint16_t transfer);

}  // namespace orvane
