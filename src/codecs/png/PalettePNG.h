#pragma once

#include "picture/EncodingPlan.h"
#include "picture/RGBABuffer.h"

namespace orvane::PalettePNG {

/// An indexed PNG at the plan's quality, effort and dithering, or a lossless truecolour PNG when
/// quantising or writing the indexed one fails. Throws ZlibError.
Bytes encode(const RGBABuffer& buffer, const EncodingPlan& plan);

}  // namespace orvane::PalettePNG
