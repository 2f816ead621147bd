#include "codecs/JXLEncoder.h"

#include "pipeline/ImageProcessingError.h"

namespace orvane::JXLEncoder {

Bytes encode(const RGBABuffer&, bool, const EncodingPlan&) {
  throw ImageProcessingError::encodingFailed(ImageFormat::jxl);
}

std::optional<Bytes> transcodeJPEG(ByteView, int) { return std::nullopt; }

}  // namespace orvane::JXLEncoder
