#pragma once

#include "platform/foundation/Bytes.h"

namespace orvane::Exif {

/// Whether `bytes` begin with "Exif\0\0", the identifier of EXIF's APP1 segments.
bool hasIdentifier(ByteView bytes);

/// The orientation in an EXIF block (CIPA DC-008), from its TIFF header ("II*\0" or "MM\0*") on,
/// with or without "Exif\0\0" before it. Returns the stored number, of any type of integer, or 1
/// when the block is broken or has none.
int orientation(ByteView block);

}  // namespace orvane::Exif
