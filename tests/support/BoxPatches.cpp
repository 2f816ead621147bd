#include "support/BoxPatches.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace orvane::test {

std::size_t codeIn(ByteView file, std::string_view code) {
  const auto found = std::search(file.begin(), file.end(), code.begin(), code.end());
  if (found == file.end()) throw std::runtime_error("no " + std::string(code));
  return static_cast<std::size_t>(found - file.begin());
}

Bytes withCode(Bytes file, std::string_view code, std::string_view by) {
  std::ranges::copy(by, file.begin() + static_cast<std::ptrdiff_t>(codeIn(file, code)));
  return file;
}

Bytes withReferencesTo(Bytes file, std::uint16_t from, std::uint16_t to,
                       std::initializer_list<std::string_view> types) {
  for (const std::string_view type : types) {
    const std::size_t identifiers = codeIn(file, type) + 4;
    for (const std::size_t at : {identifiers, identifiers + 4}) {
      if (file.at(at) << 8 != (from & 0xFF00) || file.at(at + 1) != (from & 0xFF)) continue;
      file[at] = static_cast<std::uint8_t>(to >> 8);
      file[at + 1] = static_cast<std::uint8_t>(to);
    }
  }
  return file;
}

void put32(Bytes& file, std::size_t at, std::uint32_t value) {
  for (const int shift : {24, 16, 8, 0}) file.at(at++) = static_cast<std::uint8_t>(value >> shift);
}

Bytes withSize(Bytes file, std::uint32_t width, std::uint32_t height) {
  const std::size_t size = codeIn(file, "ispe") + 8;
  put32(file, size, width);
  put32(file, size + 4, height);
  return file;
}

}  // namespace orvane::test
