#pragma once

#include <cstdint>

#include "codecs/jpeg/BlockTransform.h"
#include "codecs/jpeg/Quantizer.h"
#include "codecs/jpeg/VisualMask.h"

namespace orvane {

/// Codes one block of luma, less 128, into 64 levels. A block with black or white pixels beside
/// others is coded in several rounds. Each round accepts the overshoot that the last one has left
/// in black and white pixels, since decoders clip it, and so comes nearer to the other pixels.
void codeLumaBlock(const Block& luma, ErrorVisibility visibility, const Quantizer& quantizer,
                   std::int16_t* levels);

}  // namespace orvane
