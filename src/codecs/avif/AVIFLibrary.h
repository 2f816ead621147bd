#pragma once

#include <avif/avif.h>

#include <compare>
#include <string_view>

#include "platform/foundation/Bytes.h"
#include "platform/foundation/Handle.h"

/// libavif's handles, and the one place that knows what differs between its versions (0.11 to 1.x)
/// and those of libaom behind it.
namespace orvane::AVIFLibrary {

using Decoder = Handle<avifDecoder, avifDecoderDestroy>;
using Encoder = Handle<avifEncoder, avifEncoderDestroy>;
using Picture = Handle<avifImage, avifImageDestroy>;

struct Version {
  int major = 0;
  int minor = 0;
  auto operator<=>(const Version&) const = default;
};

/// The version of the libaom that libavif uses; 0.0 when it uses none.
Version aomVersion();

/// The same from libavif's list of codecs, such as "dav1d [dec]:1.0.0, aom [enc/dec]:v3.6.0". Some
/// builds leave out the "v".
Version aomVersionIn(std::string_view codecs);

/// The file that an encoder has written.
struct Output {
  avifRWData data = AVIF_DATA_EMPTY;

  Output() = default;
  ~Output() { avifRWDataFree(&data); }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
};

/// All three throw std::bad_alloc.
Decoder makeDecoder();
Encoder makeEncoder();
Picture makePicture(std::uint32_t width, std::uint32_t height, std::uint32_t depth,
                    avifPixelFormat format);

/// The axis of imir (ISO/IEC 23008-12, 6.5.12): 0 exchanges top and bottom, 1 left and right.
int mirrorAxis(const avifImage& picture);

/// Throws std::bad_alloc.
void setICCProfile(avifImage& picture, ByteView profile);

/// The quantizers of libaom's command line: 0 (lossless) … 63.
struct Quantizers {
  int color = 0;
  int alpha = 0;
};
void setQuantizers(avifEncoder& encoder, Quantizers quantizers);

/// Sets an option of the encoder behind libavif by its name there. Adding the first picture fails
/// with AVIF_RESULT_INVALID_CODEC_SPECIFIC_OPTION when the encoder does not know it. Throws
/// std::bad_alloc.
void setCodecOption(avifEncoder& encoder, const char* name, const char* value);

}  // namespace orvane::AVIFLibrary
