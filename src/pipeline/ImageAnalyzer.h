#pragma once

#include "picture/ImageCharacteristics.h"
#include "picture/RGBABuffer.h"

namespace orvane::ImageAnalyzer {

/// One pass over a grid of at most about 1.2 million samples. Cannot fail.
ImageCharacteristics analyze(const RGBABuffer& buffer);

}  // namespace orvane::ImageAnalyzer
