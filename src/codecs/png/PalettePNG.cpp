#include "codecs/png/PalettePNG.h"

#include <algorithm>
#include <cmath>

#include "codecs/png/PNGQuantEncoder.h"
#include "codecs/png/PNGWriter.h"
#include "picture/ColorProfile.h"
#include "picture/ImageProcessingError.h"

namespace orvane::PalettePNG {
namespace {

/// libimagequant's speed, 1 (slow)…10 (fast).
int quantizationSpeed(EncodingPlan::Effort effort) {
  switch (effort) {
    case EncodingPlan::Effort::fast:
      return 8;
    case EncodingPlan::Effort::balanced:
      return 4;
    case EncodingPlan::Effort::thorough:
      return 3;
  }
  return 4;
}

Bytes encodeIndexed(const RGBABuffer& buffer, const EncodingPlan& plan) {
  const LiqAttr attributes(liq_attr_create());
  if (!attributes) throw ImageProcessingError::encodingFailed(ImageFormat::png);
  const auto target = static_cast<int>(std::clamp(std::round(plan.quality), 0.0, 100.0));
  liq_set_quality(attributes.get(), 0, target);
  liq_set_speed(attributes.get(), quantizationSpeed(plan.effort));
  const auto quantized = PNGQuantEncoder::quantize(attributes.get(), buffer.pixels, buffer.width,
                                                   buffer.height, plan.ditheringLevel);
  return PNGWriter::writeIndexedPNG(buffer.width, buffer.height, quantized.indices,
                                    quantized.palette,
                                    ColorProfile::embeddableICC(*buffer.colorSpace));
}

}  // namespace

Bytes encode(const RGBABuffer& buffer, const EncodingPlan& plan) try {
  return encodeIndexed(buffer, plan);
} catch (const std::exception&) {
  return PNGQuantEncoder::encodeLossless(buffer, plan);
}

}  // namespace orvane::PalettePNG
