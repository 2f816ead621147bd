#pragma once

#include <cstdint>

#include "codecs/jpeg/BlockTransform.h"
#include "codecs/jpeg/Quantizer.h"
#include "codecs/jpeg/VisualMask.h"

namespace orvane {

/// Codes one block of luma, less 128, into 64 levels. Black and white pixels beside others may be
/// coded as still darker or brighter, where that costs less: decoders clip them.
void codeLumaBlock(const Block& luma, ErrorVisibility visibility, const Quantizer& quantizer,
                   std::int16_t* levels);

}  // namespace orvane
