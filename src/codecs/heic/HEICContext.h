#pragma once

#include "codecs/heic/HEIFLibrary.h"

namespace orvane {

/// As HEIFLibrary::makeContext; HEVC is decoded by `hevcDecoder` and encoded by `hevcEncoder`.
/// Throws std::bad_alloc.
HEIFContext makeHEICContext();

/// `hevcEncoder`, for pictures of `context`. Throws HEIFLibrary::Error.
HEIFEncoder makeHEVCEncoder(heif_context* context);

}  // namespace orvane
