#pragma once

#include <optional>

#include "codecs/png/PNGFormat.h"

namespace orvane {

/// Whether the file begins as PNG files do (PNG clause 5.2).
bool hasPNGSignature(ByteView file);

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
