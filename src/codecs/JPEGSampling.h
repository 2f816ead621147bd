#pragma once

#include "platform/foundation/Bytes.h"

namespace orvane {

/// Whether a JPEG keeps red, green and blue as they are, and not all of them at full size. JPEG XL
/// has no room for such: only its YCbCr can be subsampled.
bool isSubsampledRGB(ByteView jpeg);

}  // namespace orvane
