// Any bytes have an EXIF orientation.

#include <cstddef>
#include <cstdint>

#include "codecs/Exif.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvane::Exif::orientation({data, size});
  return 0;
}
