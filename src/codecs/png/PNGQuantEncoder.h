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

/// Quantises pixels to a palette, and writes truecolour PNG files.
namespace PNGQuantEncoder {

struct QuantizedImage {
  Bytes indices;  ///< width × height, rows from the top
  std::vector<PNGWriter::PaletteEntry> palette;
};

/// Reduces straight RGBA pixels, width × height × 4 bytes, to a palette with the caller's settings
/// `attr`. `dithering` is 0…1. Works on the calling thread alone, also when libimagequant was built
/// with OpenMP. Throws ImageProcessingError::encodingFailed, std::bad_alloc.
QuantizedImage quantize(liq_attr* attr, ByteView pixels, std::size_t width, std::size_t height,
                        float dithering);

/// A truecolour file, with an alpha channel if the buffer has alpha. The plan's effort decides how
/// row filters are chosen. Throws ZlibError.
Bytes encodeLossless(const RGBABuffer& rgba, const EncodingPlan& plan);

}  // namespace PNGQuantEncoder
}  // namespace orvane
