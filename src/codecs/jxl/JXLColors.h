#pragma once

#include <jxl/decode.h>

#include <optional>

#include "platform/graphics/ColorSpace.h"

namespace orvane {

/// The colour spaces of one JPEG XL picture.
struct JXLColors {
  ColorSpacePtr decoded;  ///< of the pixels that the decoder gives
  ColorSpacePtr image;    ///< of the picture; when it is not `decoded`, RGB that supports output

  /// Tells the decoder which space to give. The decoder has just reported JXL_DEC_COLOR_ENCODING.
  /// Throws UnreadableImage for a profile that is too large.
  static JXLColors choose(JxlDecoder* decoder, const JxlBasicInfo& info);
};

/// The space of the inks of a picture with a channel for black: that of its profile, uncalibrated
/// without a usable one. Throws UnreadableImage for a profile that is too large.
ColorSpacePtr inkSpace(const JxlDecoder* decoder);

/// JPEG XL's name for a space of PQ or HLG. Absent for other curves, and for primaries that JPEG XL
/// has no name for.
std::optional<JxlColorEncoding> highDynamicRangeEncoding(const ColorSpace& colorSpace);

}  // namespace orvane
