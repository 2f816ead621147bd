#pragma once

#include <jxl/decode.h>
#include <jxl/decode_cxx.h>
#include <jxl/parallel_runner.h>

#include <cstdint>

#include "platform/foundation/Bytes.h"

/// Calls of libjxl that both the reader and the encoder make.
namespace orvane::JXLLibrary {

/// A decoder that holds the whole of `file`, which must outlive it, and will report `events`.
/// Throws UnreadableImage, std::bad_alloc.
JxlDecoderPtr makeDecoder(ByteView file, int events);

/// Decodes until libjxl reports an event. Throws UnreadableImage unless it is `event`.
void advance(JxlDecoder* decoder, JxlDecoderStatus event);

/// A JxlParallelRunner. `threads` is an int: how many may work, the calling one among them.
/// libjxl's bytes and pixels do not depend on it.
JxlParallelRetCode runInParallel(void* threads, void* work, JxlParallelRunInit init,
                                 JxlParallelRunFunction function, std::uint32_t begin,
                                 std::uint32_t end) noexcept;

}  // namespace orvane::JXLLibrary
