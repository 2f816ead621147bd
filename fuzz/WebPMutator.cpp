#include <algorithm>
#include <string_view>

#include "Mutation.h"

namespace orvane::fuzz {

/// RFC 9649, 2.4: "RIFF", the size of what follows it in four bytes, the least significant first.
std::optional<Bytes> changedWebP(ByteView file, Random&) {
  constexpr std::string_view riff = "RIFF";
  constexpr std::size_t headerSize = 8;
  if (file.size() < headerSize || !std::ranges::equal(file.first(riff.size()), riff)) {
    return std::nullopt;
  }
  Bytes changed(file.begin(), file.end());
  changeBytes(changed);
  const std::size_t size = std::max(changed.size(), headerSize) - headerSize;
  changed.resize(headerSize + size);
  for (std::size_t i = 0; i < 4; ++i) {
    changed[riff.size() + i] = static_cast<std::uint8_t>(size >> (8 * i));
  }
  return changed;
}

}  // namespace orvane::fuzz
