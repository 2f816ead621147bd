#pragma once

#include <jxl/decode.h>

#include <optional>

#include "platform/graphics/ColorSpace.h"

namespace orvane {

/// What the colours of one JPEG XL picture mean.
struct JXLColors {
  ColorSpacePtr decoded;  ///< as the decoder gives them
  ColorSpacePtr image;    ///< as the picture is to have them: where not `decoded`, RGB for output

  /// Chooses the colours that the decoder is to give. For a decoder that has just reported
  /// JXL_DEC_COLOR_ENCODING. Throws UnreadableImage for a profile that is too large.
  static JXLColors choose(JxlDecoder* decoder, const JxlBasicInfo& info);
};

/// PQ and HLG as JPEG XL names them, on the primaries that it has a name for; nothing for other
/// spaces.
std::optional<JxlColorEncoding> highDynamicRangeEncoding(const ColorSpace& colorSpace);

}  // namespace orvane
