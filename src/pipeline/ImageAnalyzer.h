#pragma once

#include "picture/ImageCharacteristics.h"
#include "picture/RGBABuffer.h"

namespace orvane::ImageAnalyzer {

/// Samples the picture in one pass over a grid of at most about 1.2 million pixels. Cannot fail.
ImageCharacteristics analyze(const RGBABuffer& buffer);

}  // namespace orvane::ImageAnalyzer
