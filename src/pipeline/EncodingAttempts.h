#pragma once

#include <functional>

#include "picture/EncodingPlan.h"
#include "platform/foundation/Bytes.h"

namespace orvane {

/// The form of a PNG file. Each attempt asks for one; the plan's mode does not tell it.
enum class PNGForm { palette, truecolor };

namespace EncodingAttempts {

/// Encodes one picture by a plan. PNG output follows `pngForm`, other formats the plan's mode.
using Encoder = std::function<Bytes(const EncodingPlan& plan, PNGForm pngForm)>;

/// Encodes by the plan and, unless it asks for a single pass, by its alternative: the same plan in
/// lossless mode, or lossy at `losslessQuality`. The smaller output stays, on equal sizes the
/// first. A failing alternative is ignored. Throws what the first attempt throws.
Bytes encodeSmallest(const EncodingPlan& plan, const Encoder& encode);

}  // namespace EncodingAttempts
}  // namespace orvane
