#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/foundation/Bytes.h"

/// The framing of PNG files (PNG, third edition, clause 5), for their reader and their writer.
namespace orvane {

inline constexpr std::array<std::uint8_t, 8> pngSignature{137, 80, 78, 71, 13, 10, 26, 10};

/// Bytes of a chunk's parts: length, type, payload, CRC over type and payload.
namespace PNGChunkSize {
inline constexpr std::size_t length = 4;
inline constexpr std::size_t type = 4;
inline constexpr std::size_t crc = 4;
inline constexpr std::size_t allButPayload = length + type + crc;
inline constexpr std::size_t largestPayload = 0x7FFFFFFF;  ///< lengths have 31 bits
}  // namespace PNGChunkSize

/// The number in the first four bytes, the most significant byte first.
constexpr std::uint32_t readPNGInteger(ByteView bytes) {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
         std::uint32_t{bytes[2]} << 8 | bytes[3];
}

/// Appends the number in four bytes, the most significant byte first.
inline void appendUInt32BE(Bytes& file, std::uint32_t value) {
  for (const int shift : {24, 16, 8, 0}) file.push_back(static_cast<std::uint8_t>(value >> shift));
}

}  // namespace orvane
