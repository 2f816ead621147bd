#include "pipeline/OutputFormat.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#include "codecs/jxl/JXLEncoder.h"
#include "codecs/png/PNGQuantEncoder.h"
#include "codecs/png/PalettePNG.h"
#include "codecs/webp/WebPEncoder.h"
#include "picture/ImageProcessingError.h"
#include "pipeline/NativeImageIOEncoder.h"

namespace orvane {
namespace {

Bytes encodePNG(const Picture& picture, const EncodingPlan& plan, PNGForm form) {
  return form == PNGForm::truecolor ? PNGQuantEncoder::encodeLossless(picture.buffer, plan)
                                    : PalettePNG::encode(picture.buffer, plan);
}

Bytes encodeWebP(const Picture& picture, const EncodingPlan& plan, PNGForm) {
  return WebPEncoder::encode(picture.buffer, plan, picture.characteristics);
}

Bytes encodeJXL(const Picture& picture, const EncodingPlan& plan, PNGForm) {
  return JXLEncoder::encode(picture.buffer, picture.buffer.hasAlpha, plan);
}

std::optional<Bytes> repackJPEG(ByteView file, const EncodingPlan& plan) {
  return JXLEncoder::transcodeJPEG(file, JXLEncoder::effort(plan.effort), plan.threads);
}

template <ImageFormat::Case format>
Bytes encodeNative(const Picture& picture, const EncodingPlan& plan, PNGForm) {
  return NativeImageIOEncoder::encode(picture.image, picture.buffer.hasAlpha, format, plan,
                                      picture.characteristics);
}

/// PNG clause 11.2.1: sides have 31 bits.
constexpr OutputFormat png{.format = ImageFormat::png,
                           .input = OutputFormat::Input::buffer,
                           .maximumSide = 0x7FFFFFFF,
                           .encodeForm = encodePNG};

/// The side is libjpeg's JPEG_MAX_DIMENSION. ITU-T T.81 would allow 65 535.
constexpr OutputFormat jpeg{.format = ImageFormat::jpeg,
                            .input = OutputFormat::Input::image,
                            .maximumSide = 65500,
                            .encodeForm = encodeNative<ImageFormat::jpeg>};

/// The largest multiple of 8 in 16 bits: HEVC codes sides in multiples of 8, and decoders take 16
/// bits of them. Pictures of more than 35 million pixels fit no level of ITU-T H.265 (A.4.1) and
/// claim none.
constexpr OutputFormat heic{.format = ImageFormat::heic,
                            .input = OutputFormat::Input::image,
                            .maximumSide = 65528,
                            .encodeForm = encodeNative<ImageFormat::heic>};

/// AV1 codes a side less one in 16 bits (AV1 Bitstream Specification, 5.5.1).
constexpr OutputFormat avif{.format = ImageFormat::avif,
                            .input = OutputFormat::Input::image,
                            .maximumSide = 65536,
                            .encodeForm = encodeNative<ImageFormat::avif>};

/// RFC 9649, 2.6: sides have 14 bits.
constexpr OutputFormat webp{.format = ImageFormat::webp,
                            .input = OutputFormat::Input::buffer,
                            .maximumSide = 16383,
                            .encodeForm = encodeWebP};

/// ISO/IEC 18181-1, annex M: the limit of level 10.
constexpr OutputFormat jxl{.format = ImageFormat::jxl,
                           .input = OutputFormat::Input::buffer,
                           .maximumSide = std::size_t{1} << 30,
                           .encodeForm = encodeJXL,
                           .repacking = {{ImageFormat::jpeg, repackJPEG}}};

}  // namespace

const OutputFormat& OutputFormat::of(ImageFormat format) {
  switch (format) {
    case ImageFormat::png:
      return png;
    case ImageFormat::jpeg:
      return jpeg;
    case ImageFormat::heic:
      return heic;
    case ImageFormat::avif:
      return avif;
    case ImageFormat::webp:
      return webp;
    case ImageFormat::jxl:
      return jxl;
  }
  std::abort();
}

Bytes OutputFormat::encode(const Picture& picture, const EncodingPlan& plan, PNGForm pngForm) const
    try {
  if (std::max(picture.buffer.width, picture.buffer.height) > maximumSide) {
    throw ImageProcessingError::encodingFailed(format);
  }
  return encodeForm(picture, plan, pngForm);
} catch (const std::bad_alloc&) {
  throw ImageProcessingError::encodingFailed(format);
}

}  // namespace orvane
