#pragma once

#include <optional>

#include "platform/graphics/CodePoints.h"
#include "platform/graphics/ICCProfile.h"

namespace orvane {

/// The code points of a profile's cicp tag (ICC.1:2022 9.2.17) for full-range RGB; nothing without
/// such a tag.
std::optional<CodePoints> taggedCodePoints(const ProfileHandle& profile);

/// The RGB profile that means the same as the code points. Null for numbers that no profile can
/// express: unspecified and reserved ones, and XYZ primaries.
ProfileHandle makeProfile(CodePoints codePoints);

/// The curve from coded value to light, both 0…1, of H.273 transfer characteristics (table 3); null
/// for unspecified and reserved numbers. For PQ and HLG a light of 1 is the reference white (ITU-R
/// BT.2408), and brighter light is clipped.
ToneCurveHandle decodingCurve(std::uint16_t transfer);

}  // namespace orvane
