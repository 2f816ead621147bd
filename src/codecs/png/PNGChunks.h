#pragma once

#include <optional>

#include "codecs/png/PNGFormat.h"

namespace orvane {

/// Whether the file begins as PNG files do (PNG clause 5.2).
bool hasPNGSignature(ByteView file);

/// The payloads of the ancillary chunks that say how to show a PNG. They lie in the file's bytes. A
/// chunk that is missing, out of place or has a wrong CRC is absent. The first of a kind counts.
struct PNGChunks {
  std::optional<ByteView> animationControl;           ///< acTL
  std::optional<ByteView> codePoints;                 ///< cICP
  std::optional<ByteView> profile;                    ///< iCCP
  std::optional<ByteView> standardRGB;                ///< sRGB
  std::optional<ByteView> gamma;                      ///< gAMA
  std::optional<ByteView> chromaticities;             ///< cHRM
  std::optional<ByteView> exchangeableImageMetadata;  ///< eXIf

  /// Reads a file that begins with the signature. Throws UnreadableImage unless chunks follow it
  /// without a gap up to IEND. Bytes after IEND are ignored.
  static PNGChunks read(ByteView file);
};

}  // namespace orvane
