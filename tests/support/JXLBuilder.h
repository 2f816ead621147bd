#pragma once

#include <jxl/codestream_header.h>
#include <jxl/color_encoding.h>

#include <optional>
#include <span>

#include "platform/foundation/Bytes.h"
#include "platform/graphics/Image.h"

/// JPEG XL files made by libjxl's own encoder, in forms that the code under test never writes.
namespace orvane::test {

struct JXLOptions {
  /// Lossy at this distance, in XYB; absent: lossless, in the picture's own colours.
  std::optional<float> xybDistance;
  int effort = 3;
  std::optional<int> bitsPerSample;  ///< absent: the picture's
  int exponentBits = 0;              ///< above 0 the samples are floats
  /// sRGB, or grey sRGB, without either of these.
  std::optional<JxlColorEncoding> encoding;
  Bytes icc;
  bool inContainer = false;
  JxlOrientation orientation = JXL_ORIENT_IDENTITY;
  /// One channel more than the picture has, at 0 in the first pixel and at half in the others.
  std::optional<JxlExtraChannelType> extraChannel;
  /// Columns and rows of canvas around the frames of an animation, all blank.
  std::uint32_t border = 0;
};

/// Pictures of any layout but cmyk; opaque rgba is written as three channels. More than one make an
/// animation. Throws std::runtime_error when libjxl refuses.
Bytes buildJXL(std::span<const Image> frames, const JXLOptions& options = {});
Bytes buildJXL(const Image& image, const JXLOptions& options = {});

/// Whether this libjxl writes premultiplied alpha.
bool canBuildPremultipliedJXL();

/// `jpeg` in a container from which libjxl can rebuild it. Throws std::runtime_error.
Bytes buildJXLFromJPEG(ByteView jpeg, int effort);

/// A one-row picture of 32-bit floats, R, G, B.
Bytes buildFloatJXL(std::span<const float> samples);

/// RGB, or grey, with a D65 white point.
JxlColorEncoding jxlEncoding(JxlColorSpace space, JxlPrimaries primaries,
                             JxlTransferFunction transfer);

/// The header of a file. Throws std::runtime_error when it cannot be read.
JxlBasicInfo readJXLBasicInfo(ByteView file);

/// The JPEG that a file was made from, rebuilt; empty when it cannot be.
Bytes rebuildJPEG(ByteView file);

}  // namespace orvane::test
