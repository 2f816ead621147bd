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
