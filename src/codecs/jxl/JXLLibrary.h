#pragma once

#include <jxl/decode.h>
#include <jxl/decode_cxx.h>

#include "platform/foundation/Bytes.h"

/// What reading and writing JPEG XL both ask of libjxl.
namespace orvane::JXLLibrary {

/// A decoder that holds the whole of `file`, which must outlive it, and will report `events`.
/// Throws UnreadableImage, std::bad_alloc.
JxlDecoderPtr makeDecoder(ByteView file, int events);

/// Decodes up to `event`, which must be the next to come. Throws UnreadableImage.
void advance(JxlDecoder* decoder, JxlDecoderStatus event);

}  // namespace orvane::JXLLibrary
