#include "platform/imageio/HEVCDecoder.h"

#include <libde265/de265.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "platform/imageio/HEIFLibrary.h"
#include "platform/imageio/HEVCStream.h"
#include "platform/imageio/ImageLimits.h"

namespace orvane {
namespace {

/// Above that of libheif's own plugin (100), which is never asked then.
constexpr int priority = 200;

/// Why a picture is refused. libheif keeps the text's address: a literal.
struct Refusal {
  const char* reason;
};

constexpr heif_error success{heif_error_Ok, heif_suberror_Unspecified, "Success"};

/// Runs what must not throw into libheif.
template <class Work>
heif_error guarded(Work work) {
  const char* reason = nullptr;
  try {
    work();
    return success;
  } catch (const Refusal& refusal) {
    reason = refusal.reason;
  } catch (const std::exception&) {
    reason = "no memory, or a size past the limits";
  }
  return {heif_error_Decoder_plugin_error, heif_suberror_Unspecified, reason};
}

// MARK: Input

/// NAL units, each after its length in four bytes.
std::vector<ByteView> splitUnits(ByteView data) {
  std::vector<ByteView> units;
  while (!data.empty()) {
    if (data.size() < 4) throw Refusal{"stray bytes after a NAL unit"};
    const std::size_t length = std::size_t{data[0]} << 24 | std::size_t{data[1]} << 16 |
                               std::size_t{data[2]} << 8 | data[3];
    data = data.subspan(4);
    if (length > data.size()) throw Refusal{"a NAL unit is cut short"};
    units.push_back(data.first(length));
    data = data.subspan(length);
  }
  return units;
}

void checkSizes(const std::vector<ByteView>& units) {
  for (const ByteView unit : units) {
    if (HEVCStream::kind(unit) != HEVCStream::UnitKind::sequenceParameters) continue;
    const auto size = HEVCStream::pictureSize(unit);
    if (!size) throw Refusal{"a sequence parameter set is cut short"};
    ImageLimits::check(size->width, size->height, 4);
  }
}

// MARK: Output

/// The colour description of the stream's video usability information; reserved values count as
/// unspecified (2).
void setColorProfile(heif_image* to, const de265_image* from) {
  const HEIFColorProfile profile(heif_nclx_color_profile_alloc());
  if (profile == nullptr) throw std::bad_alloc();
  const auto set = [&](auto setter, int value) {
    const heif_error error = setter(profile.get(), static_cast<std::uint16_t>(value));
    if (error.code != heif_error_Ok) setter(profile.get(), 2);
  };
  set(heif_nclx_color_profile_set_color_primaries, de265_get_image_colour_primaries(from));
  set(heif_nclx_color_profile_set_transfer_characteristics,
      de265_get_image_transfer_characteristics(from));
  set(heif_nclx_color_profile_set_matrix_coefficients, de265_get_image_matrix_coefficients(from));
  profile->full_range_flag = de265_get_image_full_range_flag(from) != 0;
  HEIFLibrary::check(heif_image_set_nclx_color_profile(to, profile.get()));
}

void copyPlane(heif_image* to, heif_channel channel, const de265_image* from, int index) {
  const int width = de265_get_image_width(from, index);
  const int height = de265_get_image_height(from, index);
  const int bitDepth = de265_get_bits_per_pixel(from, index);
  if (width <= 0 || height <= 0) throw Refusal{"cropped to nothing"};
  HEIFLibrary::check(heif_image_add_plane(to, channel, width, height, bitDepth));
  int fromStride = 0;
  int toStride = 0;
  const std::uint8_t* source = de265_get_image_plane(from, index, &fromStride);
  std::uint8_t* target = heif_image_get_plane(to, channel, &toStride);
  const std::size_t rowBytes = static_cast<std::size_t>(width) * (bitDepth > 8 ? 2 : 1);
  for (int y = 0; y < height; ++y, source += fromStride, target += toStride) {
    std::memcpy(target, source, rowBytes);
  }
}

HEIFImage converted(const de265_image* from) {
  const de265_chroma chroma = de265_get_chroma_format(from);
  const bool monochrome = chroma == de265_chroma_mono;
  const bool equalDepths = de265_get_bits_per_pixel(from, 0) == de265_get_bits_per_pixel(from, 1);
  if (!monochrome && !equalDepths) throw Refusal{"luma and chroma differ in depth"};
  heif_image* created = nullptr;
  // Chroma formats have the numbers of chroma_format_idc in both libraries.
  HEIFLibrary::check(
      heif_image_create(de265_get_image_width(from, 0), de265_get_image_height(from, 0),
                        monochrome ? heif_colorspace_monochrome : heif_colorspace_YCbCr,
                        static_cast<heif_chroma>(chroma), &created));
  HEIFImage to(created);
  copyPlane(to.get(), heif_channel_Y, from, 0);
  if (!monochrome) {
    copyPlane(to.get(), heif_channel_Cb, from, 1);
    copyPlane(to.get(), heif_channel_Cr, from, 2);
  }
  setColorProfile(to.get(), from);
  return to;
}

// MARK: Decoding

struct ContextFreer {
  void operator()(de265_decoder_context* context) const { de265_free_decoder(context); }
};
using ContextHandle = std::unique_ptr<de265_decoder_context, ContextFreer>;

ContextHandle contextWith(const std::vector<ByteView>& units) {
  ContextHandle context(de265_new_decoder());
  if (context == nullptr) throw std::bad_alloc();
  for (const ByteView unit : units) {
    const de265_error error =
        de265_push_NAL(context.get(), unit.data(), static_cast<int>(unit.size()), 0, nullptr);
    if (error != DE265_OK) throw Refusal{de265_get_error_text(error)};
  }
  if (de265_flush_data(context.get()) != DE265_OK) throw std::bad_alloc();
  return context;
}

/// Messages beside the picture (SEI) that are not understood do it no harm.
bool isHarmless(de265_error warning) {
  return warning == DE265_ERROR_CANNOT_PROCESS_SEI ||
         warning == DE265_WARNING_SPS_MISSING_CANNOT_DECODE_SEI;
}

/// Decodes all that has been pushed; every picture and every warning goes to its handler.
template <class PictureHandler, class WarningHandler>
void decodeAll(de265_decoder_context* context, PictureHandler onPicture, WarningHandler onWarning) {
  for (int more = 1; more != 0;) {
    const de265_error error = de265_decode(context, &more);
    if (error != DE265_OK) throw Refusal{de265_get_error_text(error)};
    for (de265_error warning = de265_get_warning(context); warning != DE265_OK;
         warning = de265_get_warning(context)) {
      if (!isHarmless(warning)) onWarning(warning);
    }
    if (const de265_image* picture = de265_get_next_picture(context)) onPicture(picture);
  }
}

/// The one picture that the units hold. Sees damage by what the decoder complains of, and by the
/// picture's checksum where there is one.
HEIFImage decodePicture(const std::vector<ByteView>& units) {
  const ContextHandle context = contextWith(units);
  de265_set_parameter_bool(context.get(), DE265_DECODER_PARAM_BOOL_SEI_CHECK_HASH, 1);
  HEIFImage result;
  decodeAll(
      context.get(),
      [&](const de265_image* picture) {
        if (result != nullptr) throw Refusal{"more than one picture"};
        result = converted(picture);
      },
      [](de265_error warning) { throw Refusal{de265_get_error_text(warning)}; });
  if (result == nullptr) throw Refusal{"no picture"};
  return result;
}

/// Damage often looks like the end of a slice, and what then is missing of the picture libde265
/// does not miss. So the units are decoded once more without the end of the last slice, and without
/// the filters, which takes less than the first time: now it must complain.
void checkCompleteness(std::vector<ByteView> units) {
  const auto lastSlice = std::find_if(units.rbegin(), units.rend(), [](ByteView unit) {
    return HEVCStream::kind(unit) == HEVCStream::UnitKind::slice;
  });
  if (lastSlice == units.rend()) throw Refusal{"no slice"};
  const Bytes endless = HEVCStream::withoutEnd(*lastSlice);
  *lastSlice = endless;

  const ContextHandle context = contextWith(units);
  de265_set_parameter_bool(context.get(), DE265_DECODER_PARAM_DISABLE_DEBLOCKING, 1);
  de265_set_parameter_bool(context.get(), DE265_DECODER_PARAM_DISABLE_SAO, 1);
  bool complete = false;
  decodeAll(
      context.get(), [](const de265_image*) {},
      [&](de265_error warning) { complete |= warning == DE265_WARNING_CTB_OUTSIDE_IMAGE_AREA; });
  if (!complete) throw Refusal{"the last slice ends too soon"};
}

// MARK: Plugin

const char* name() { return "libde265, strict"; }

int supports(heif_compression_format format) {
  return format == heif_compression_HEVC ? priority : 0;
}

/// The units of one picture, as libheif has pushed them.
using Decoder = Bytes;

heif_error newDecoder(void** decoder) {
  return guarded([&] { *decoder = new Decoder; });
}

void freeDecoder(void* decoder) { delete static_cast<Decoder*>(decoder); }

heif_error pushData(void* decoder, const void* data, size_t size) {
  return guarded([&] {
    auto& units = *static_cast<Decoder*>(decoder);
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    units.insert(units.end(), bytes, bytes + size);
  });
}

heif_error decodeImage(void* decoder, heif_image** image) {
  *image = nullptr;
  return guarded([&] {
    const std::vector<ByteView> units = splitUnits(*static_cast<Decoder*>(decoder));
    checkSizes(units);
    HEIFImage picture = decodePicture(units);
    checkCompleteness(units);
    *image = picture.release();
  });
}

}  // namespace

const heif_decoder_plugin hevcDecoder{.plugin_api_version = 3,
                                      .get_plugin_name = name,
                                      .init_plugin = [] { de265_init(); },
                                      .deinit_plugin = [] { de265_free(); },
                                      .does_support_format = supports,
                                      .new_decoder = newDecoder,
                                      .free_decoder = freeDecoder,
                                      .push_data = pushData,
                                      .decode_image = decodeImage,
                                      .set_strict_decoding = nullptr,
                                      .id_name = "libde265-strict"};

}  // namespace orvane
