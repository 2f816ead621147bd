#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "platform/foundation/Bytes.h"

/// Changes to the boxes of HEIC and AVIF files (ISO/IEC 14496-12). Functions that look for a code
/// throw std::runtime_error when the file has none.
namespace orvane::test {

/// Where the four characters of a box's or an item's type first stand.
std::size_t codeIn(ByteView file, std::string_view code);

/// `file` with the first `code` replaced.
Bytes withCode(Bytes file, std::string_view code, std::string_view by);

/// `file` with the identifiers of `from` replaced by `to`, both of 16 bits, in its item references
/// of those types: one box each, with one identifier behind the first.
Bytes withReferencesTo(Bytes file, std::uint16_t from, std::uint16_t to,
                       std::initializer_list<std::string_view> types);

/// Writes a big-endian number of 32 bits.
void put32(Bytes& file, std::size_t at, std::uint32_t value);

/// `file` with the size of the picture that stands in its header (ispe) replaced.
Bytes withSize(Bytes file, std::uint32_t width, std::uint32_t height);

}  // namespace orvane::test
