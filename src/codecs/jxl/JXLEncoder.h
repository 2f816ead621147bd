#pragma once

#include <optional>

#include "picture/EncodingPlan.h"
#include "picture/RGBABuffer.h"

namespace orvane::JXLEncoder {

/// libjxl's distance (0 is lossless, 1 is visually lossless, 25 is the worst) for a codec quality
/// of 0…100. Quality is capped at 99: lossy coding never comes closer than 0.19.
double distance(double quality);

/// libjxl's effort for a tier: 5, 6 or 7.
constexpr int effort(EncodingPlan::Effort tier) { return 5 + ordinal(tier); }

/// A bare JPEG XL codestream (ISO/IEC 18181-1) of the pixels; `hasAlpha` keeps the alpha channel.
/// Throws ImageProcessingError::encodingFailed, std::bad_alloc.
Bytes encode(const RGBABuffer& rgba, bool hasAlpha, const EncodingPlan& plan);

/// The JPEG in a JPEG XL container (ISO/IEC 18181-2) from which libjxl rebuilds the file bit for
/// bit. Rebuilding has been tried; a JPEG that libjxl cannot transcode or rebuild gives nothing.
/// `effort` is libjxl's. Works on up to `threads` threads.
std::optional<Bytes> transcodeJPEG(ByteView jpeg, int effort, int threads = 1);

}  // namespace orvane::JXLEncoder
