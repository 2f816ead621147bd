#pragma once

#include <functional>

#include "picture/EncodingPlan.h"
#include "platform/foundation/Bytes.h"

namespace orvane {

/// The form of a PNG, which one attempt asks for beside the plan's mode.
enum class PNGForm { palette, truecolor };

namespace EncodingAttempts {

/// Encodes the picture at hand by a plan. PNG output follows the form and not the plan's mode.
using Encoder = std::function<Bytes(const EncodingPlan& plan, PNGForm pngForm)>;

/// Encodes by the plan and, unless it asks for a single pass, by its alternative: the same plan in
/// lossless mode, or lossy at `losslessQuality`. The smaller output stays, on equal sizes the
/// first. An alternative that fails is passed over; what the first attempt throws goes to the
/// caller.
Bytes encodeSmallest(const EncodingPlan& plan, const Encoder& encode);

}  // namespace EncodingAttempts
}  // namespace orvane
