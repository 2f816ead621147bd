#pragma once

#include <cstdint>
#include <optional>

#include "platform/foundation/Bytes.h"

/// NAL units of an HEVC stream (ITU-T H.265): what has to be known of them without decoding. Units
/// come without start code or length. Safe on any bytes.
namespace orvane::HEVCStream {

enum class UnitKind { slice, sequenceParameters, other };

/// What a unit of the base layer is; units of other layers are `other`.
UnitKind kind(ByteView unit);

struct PictureSize {
  std::uint64_t width = 0;
  std::uint64_t height = 0;
};

/// The size at which pictures are coded, before cropping; nothing when the sequence parameter set
/// is cut short.
std::optional<PictureSize> pictureSize(ByteView sequenceParameters);

/// A slice segment whose data decodes to the same blocks but does not say any more that they end
/// after the last one. A decoder then comes to the end of the picture and complains about the
/// missing end, if, and only if, the slice segment goes to the end of the picture. (Left as they
/// are, slices that damage has made end too soon are decoded without complaint, and the rest of the
/// picture stays undefined.)
Bytes withoutEnd(ByteView slice);

}  // namespace orvane::HEVCStream
