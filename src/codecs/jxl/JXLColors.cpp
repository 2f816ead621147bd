#include "codecs/jxl/JXLColors.h"

#include <jxl/version.h>

#include "codecs/ImageLimits.h"
#include "codecs/UnreadableImage.h"

namespace orvane {
namespace {

/// Up to libjxl 0.8 the queries have a parameter for a pixel format, which they ignore.
#if JPEGXL_NUMERIC_VERSION < JPEGXL_COMPUTE_NUMERIC_VERSION(0, 9, 0)
#define ORVANE_JXL_QUERY(function, decoder, ...) function(decoder, nullptr, __VA_ARGS__)
#else
#define ORVANE_JXL_QUERY(function, decoder, ...) function(decoder, __VA_ARGS__)
#endif

/// The enumerated encoding of the colours; absent when an ICC profile defines them.
std::optional<JxlColorEncoding> encoding(const JxlDecoder* decoder, JxlColorProfileTarget target) {
  JxlColorEncoding result;
  if (ORVANE_JXL_QUERY(JxlDecoderGetColorAsEncodedProfile, decoder, target, &result) !=
      JXL_DEC_SUCCESS) {
    return std::nullopt;
  }
  return result;
}

/// The ICC profile of the colours, which libjxl makes for an enumerated encoding; empty when there
/// is none.
Bytes profile(const JxlDecoder* decoder, JxlColorProfileTarget target) {
  std::size_t size = 0;
  if (ORVANE_JXL_QUERY(JxlDecoderGetICCProfileSize, decoder, target, &size) != JXL_DEC_SUCCESS) {
    return {};
  }
  ImageLimits::checkICC(size);
  Bytes bytes(size);
  if (ORVANE_JXL_QUERY(JxlDecoderGetColorAsICCProfile, decoder, target, bytes.data(), size) !=
      JXL_DEC_SUCCESS) {
    return {};
  }
  return bytes;
}

#undef ORVANE_JXL_QUERY

/// The same in the numbers of ITU-T H.273, which JPEG XL shares; absent when H.273 has none.
std::optional<CodePoints> codePoints(const JxlColorEncoding& encoding) {
  if (encoding.transfer_function == JXL_TRANSFER_FUNCTION_GAMMA ||
      encoding.transfer_function == JXL_TRANSFER_FUNCTION_UNKNOWN) {
    return std::nullopt;
  }
  const auto transfer = static_cast<std::uint16_t>(encoding.transfer_function);
  if (encoding.color_space == JXL_COLOR_SPACE_GRAY) return CodePoints{1, transfer};
  if (encoding.color_space != JXL_COLOR_SPACE_RGB) return std::nullopt;
  if (encoding.primaries == JXL_PRIMARIES_P3) {  // one number of H.273 for each white
    if (encoding.white_point == JXL_WHITE_POINT_DCI) return CodePoints{11, transfer};
    if (encoding.white_point == JXL_WHITE_POINT_D65) return CodePoints{12, transfer};
    return std::nullopt;
  }
  if (encoding.white_point != JXL_WHITE_POINT_D65 || encoding.primaries == JXL_PRIMARIES_CUSTOM) {
    return std::nullopt;
  }
  return CodePoints{static_cast<std::uint16_t>(encoding.primaries), transfer};
}

/// The space of the pixels that the decoder gives.
ColorSpacePtr decodedSpace(const JxlDecoder* decoder, ColorSpace::Model model) {
  const auto named = encoding(decoder, JXL_COLOR_PROFILE_TARGET_DATA);
  if (const auto points = named ? codePoints(*named) : std::nullopt) {
    return ColorSpace::fromCodePoints(*points, model);
  }
  return ColorSpace::fromICC(profile(decoder, JXL_COLOR_PROFILE_TARGET_DATA), model);
}

/// An enumerated encoding with a D65 white point.
JxlColorEncoding makeEncoding(JxlColorSpace space, JxlPrimaries primaries,
                              JxlTransferFunction transfer) {
  JxlColorEncoding encoding{};
  encoding.color_space = space;
  encoding.white_point = JXL_WHITE_POINT_D65;
  encoding.primaries = primaries;
  encoding.transfer_function = transfer;
  encoding.rendering_intent = JXL_RENDERING_INTENT_RELATIVE;
  return encoding;
}

/// Asks the decoder for sRGB's curve on these primaries. A refusal changes nothing.
void prefer(JxlDecoder* decoder, ColorSpace::Model model, JxlPrimaries primaries) {
  const auto space = model == ColorSpace::Model::gray ? JXL_COLOR_SPACE_GRAY : JXL_COLOR_SPACE_RGB;
  const JxlColorEncoding preference = makeEncoding(space, primaries, JXL_TRANSFER_FUNCTION_SRGB);
  JxlDecoderSetPreferredColorProfile(decoder, &preference);
}

/// The primaries of H.273 that have a D65 white and a name in JPEG XL.
std::optional<JxlPrimaries> primariesOf(CodePoints codePoints) {
  switch (codePoints.primaries) {
    case 1:
      return JXL_PRIMARIES_SRGB;
    case 9:
      return JXL_PRIMARIES_2100;
    case 12:
      return JXL_PRIMARIES_P3;
    default:
      return std::nullopt;
  }
}

}  // namespace

JXLColors JXLColors::choose(JxlDecoder* decoder, const JxlBasicInfo& info) {
  const auto model =
      info.num_color_channels == 1 ? ColorSpace::Model::gray : ColorSpace::Model::rgb;
  // libjxl converts a picture in XYB into enumerated encodings only.
  if (info.uses_original_profile || encoding(decoder, JXL_COLOR_PROFILE_TARGET_ORIGINAL)) {
    const ColorSpacePtr own = decodedSpace(decoder, model);
    return {own, own};
  }
  const ColorSpacePtr embedded =
      ColorSpace::fromICC(profile(decoder, JXL_COLOR_PROFILE_TARGET_ORIGINAL), model);
  const bool isWide = embedded->supportsOutput() && !embedded->isSRGB();
  prefer(decoder, model, isWide ? JXL_PRIMARIES_2100 : JXL_PRIMARIES_SRGB);
  const ColorSpacePtr decoded = decodedSpace(decoder, model);
  return {decoded, embedded->supportsOutput() ? embedded : decoded};
}

ColorSpacePtr inkSpace(const JxlDecoder* decoder) {
  return ColorSpace::fromICC(profile(decoder, JXL_COLOR_PROFILE_TARGET_DATA),
                             ColorSpace::Model::cmyk);
}

std::optional<JxlColorEncoding> highDynamicRangeEncoding(const ColorSpace& colorSpace) {
  const auto codePoints = colorSpace.codePoints();
  if (!codePoints || !hasHighDynamicRange(*codePoints)) return std::nullopt;
  const auto primaries = primariesOf(*codePoints);
  if (!primaries) return std::nullopt;
  // JPEG XL's transfer functions have H.273's numbers.
  return makeEncoding(JXL_COLOR_SPACE_RGB, *primaries,
                      static_cast<JxlTransferFunction>(codePoints->transfer));
}

}  // namespace orvane
