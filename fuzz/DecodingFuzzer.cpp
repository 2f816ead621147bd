// libFuzzer's entry: whatever the bytes are, they are a picture or refused.

#include <cstddef>
#include <cstdint>

#include "picture/ImageProcessingError.h"
#include "pipeline/ImageDecoder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    orvane::ImageDecoder::decodeImageSource({data, size});
  } catch (const orvane::ImageProcessingError&) {
  }
  return 0;
}
