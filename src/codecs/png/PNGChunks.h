#pragma once

#include <cstdint>
#include <optional>

#include "platform/foundation/Bytes.h"

namespace orvane {

/// Whether the file begins as PNG files do (PNG, third edition, clause 5.2).
bool hasPNGSignature(ByteView file);

/// A number as PNG stores it: four bytes, the most significant first.
constexpr std::uint32_t readPNGInteger(ByteView bytes) {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
         std::uint32_t{bytes[2]} << 8 | bytes[3];
}

/// The payloads, in the file's own bytes, of the ancillary chunks that say how to show a PNG. One
/// that is missing, damaged (its CRC) or out of place is absent; of several of a kind the first
/// counts.
struct PNGChunks {
  std::optional<ByteView> animationControl;           ///< acTL
  std::optional<ByteView> codePoints;                 ///< cICP
  std::optional<ByteView> profile;                    ///< iCCP
  std::optional<ByteView> standardRGB;                ///< sRGB
  std::optional<ByteView> gamma;                      ///< gAMA
  std::optional<ByteView> chromaticities;             ///< cHRM
  std::optional<ByteView> exchangeableImageMetadata;  ///< eXIf

  /// Reads a file that begins with the signature. Throws UnreadableImage unless chunks follow it
  /// without a gap up to IEND; what comes after that does not matter.
  static PNGChunks read(ByteView file);
};

}  // namespace orvane
