#pragma once

#include <libimagequant.h>

#include <vector>

#include "codecs/png/PNGWriter.h"
#include "picture/EncodingPlan.h"
#include "picture/RGBABuffer.h"
#include "platform/foundation/Handle.h"

namespace orvane {

/// Owner of libimagequant's settings.
using LiqAttr = Handle<liq_attr, liq_attr_destroy>;

/// PNG files of a palette picture's pixels, and of a truecolour one.
namespace PNGQuantEncoder {

struct QuantizedImage {
  Bytes indices;  ///< width × height, rows from the top
  std::vector<PNGWriter::PaletteEntry> palette;
};

/// Reduces straight RGBA pixels, width × height × 4 bytes, to a palette with `attr` as the caller
/// has set it up. One thread, whatever libimagequant was built with. `dithering` 0…1. Throws
/// ImageProcessingError::encodingFailed, std::bad_alloc.
QuantizedImage quantize(liq_attr* attr, ByteView pixels, std::size_t width, std::size_t height,
                        float dithering);

/// A truecolour file, with alpha where the buffer has it; the plan's effort decides how row filters
/// are chosen. Throws ZlibError.
Bytes encodeLossless(const RGBABuffer& rgba, const EncodingPlan& plan);

}  // namespace PNGQuantEncoder
}  // namespace orvane
