// Whatever the bytes are, they are a picture that can be rendered, or refused.

#include <cstddef>
#include <cstdint>

#include "picture/ImageProcessingError.h"
#include "picture/RGBABuffer.h"
#include "pipeline/ImageDecoder.h"

namespace {

/// Larger pictures only take longer.
constexpr std::size_t mostPixels = std::size_t{1} << 20;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) try {
  const auto source = orvane::ImageDecoder::open({data, size});
  if (source->width() * source->height() > mostPixels) return 0;
  const orvane::RGBABuffer rendered(orvane::ImageDecoder::decode(*source).image);
  return 0;
} catch (const orvane::ImageProcessingError&) {
  return 0;
}
