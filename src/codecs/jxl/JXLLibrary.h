#pragma once

#include <jxl/decode.h>
#include <jxl/decode_cxx.h>

#include "platform/foundation/Bytes.h"

/// Calls of libjxl that both the reader and the encoder make.
namespace orvane::JXLLibrary {

/// A decoder that holds the whole of `file`, which must outlive it, and will report `events`.
/// Throws UnreadableImage, std::bad_alloc.
JxlDecoderPtr makeDecoder(ByteView file, int events);

/// Decodes until libjxl reports an event. Throws UnreadableImage unless it is `event`.
void advance(JxlDecoder* decoder, JxlDecoderStatus event);

}  // namespace orvane::JXLLibrary
