// Any bytes are a list of export profiles, which survives being written and read, or refused.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "profiles/ExportProfileJSON.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using orvane::ExportProfileJSON::decode, orvane::ExportProfileJSON::encode;
  const auto profiles = decode({data, size});
  if (!profiles) return 0;
  const auto text = encode(*profiles).value();
  if (decode({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}) != profiles) {
    std::abort();
  }
  for (const orvane::ExportProfile& profile : *profiles) profile.destinationFolder();
  return 0;
}
