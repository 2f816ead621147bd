#pragma once

#include "platform/graphics/CodePoints.h"
#include "platform/graphics/ICCProfile.h"

namespace orvane {

/// The RGB profile that says what the code points say, or null where they say nothing that a
/// profile can (unspecified, reserved and XYZ primaries).
ProfileHandle makeProfile(CodePoints codePoints);

/// From coded value to linear light for H.273 transfer characteristics (table 3), or null. For PQ
/// and HLG 1 is the reference white (ITU-R BT.2408); brighter light is clipped.
ToneCurveHandle decodingCurve(std::uint16_t transfer);

}  // namespace orvane
