#pragma once

#include "picture/EncodingPlan.h"
#include "picture/RGBABuffer.h"

namespace orvane::PalettePNG {

/// An indexed PNG at the plan's quality, effort and dithering; a lossless truecolour one when the
/// palette cannot be had. Throws ZlibError.
Bytes encode(const RGBABuffer& buffer, const EncodingPlan& plan);

}  // namespace orvane::PalettePNG
