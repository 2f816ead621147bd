#include "codecs/heic/HEVCDecoder.h"

#include <libde265/de265.h>

#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "codecs/ISOBaseMedia.h"
#include "codecs/ImageLimits.h"
#include "codecs/heic/HEIFLibrary.h"
#include "codecs/heic/HEVCPlane.h"
#include "platform/foundation/Bytes.h"
#include "platform/foundation/Handle.h"

namespace orvane {
namespace {

/// Higher than that of libheif's own plugin (100), so that libheif always chooses this one.
constexpr int priority = 200;

/// Thrown for a picture that is refused. libheif keeps the address of the reason, which therefore
/// is a literal.
struct Refusal {
  const char* reason;
};

constexpr heif_error success{heif_error_Ok, heif_suberror_Unspecified, "Success"};

/// Runs `work` and turns its exceptions into errors: none may reach libheif.
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

using ContextHandle = Handle<de265_decoder_context, de265_free_decoder>;

// MARK: Picture memory

using Planes = std::vector<HEVCPlane>;

Planes makePlanes(const de265_image_spec& spec, const de265_image* image) {
  const auto width = static_cast<std::size_t>(spec.width);
  const auto height = static_cast<std::size_t>(spec.height);
  const int depth = de265_get_bits_per_pixel(image, 0);
  ImageLimits::check(width, height, depth > 8 ? 8 : 4);
  Planes planes;
  planes.emplace_back(width, height, depth);
  const de265_chroma chroma = de265_get_chroma_format(image);
  if (chroma == de265_chroma_mono) return planes;
  const std::size_t across = chroma == de265_chroma_444 ? 1 : 2;
  const std::size_t down = chroma == de265_chroma_420 ? 2 : 1;
  const int chromaDepth = de265_get_bits_per_pixel(image, 1);
  for (int i = 0; i < 2; ++i) planes.emplace_back(width / across, height / down, chromaDepth);
  return planes;
}

/// Gives `image` its planes, which it owns as the user data of its first plane. Returns 1, or 0
/// when there is no memory or the size is past the limits.
int getBuffer(de265_decoder_context*, de265_image_spec* spec, de265_image* image, void* context) {
  de265_set_parameter_bool(context, DE265_DECODER_PARAM_DISABLE_SAO, 0);  // see makeContext
  try {
    auto planes = std::make_unique<Planes>(makePlanes(*spec, image));
    for (std::size_t i = 0; i < planes->size(); ++i) {
      const HEVCPlane& plane = (*planes)[i];
      de265_set_image_plane(image, static_cast<int>(i), plane.memory(),
                            static_cast<int>(plane.bytesPerRow()), planes.get());
    }
    static_cast<void>(planes.release());
    return 1;
  } catch (const std::exception&) {
    return 0;
  }
}

const Planes* planesOf(const de265_image* image) {
  return static_cast<const Planes*>(de265_get_image_plane_user_data(image, 0));
}

void releaseBuffer(de265_decoder_context*, de265_image* image, void*) { delete planesOf(image); }

/// A decoder that decodes into the memory of `getBuffer`. libde265 calls `getBuffer` only while
/// sample adaptive offset is disabled, and reads that setting again before it applies the offset:
/// it is disabled here, and enabled again by `getBuffer`.
ContextHandle makeContext() {
  ContextHandle context = owned<ContextHandle>(de265_new_decoder());
  de265_image_allocation allocation{getBuffer, releaseBuffer};
  de265_set_image_allocation_functions(context.get(), &allocation, context.get());
  de265_set_parameter_bool(context.get(), DE265_DECODER_PARAM_DISABLE_SAO, 1);
  de265_set_parameter_bool(context.get(), DE265_DECODER_PARAM_BOOL_SEI_CHECK_HASH, 1);
  return context;
}

// MARK: Output

/// Copies the colour description of the stream's video usability information. Reserved values
/// become unspecified (2).
void setColorProfile(heif_image* to, const de265_image* from) {
  const auto profile = owned<HEIFColorProfile>(heif_nclx_color_profile_alloc());
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
  // Both libraries number chroma formats as chroma_format_idc does.
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

/// Pushes NAL units, each of which comes after its length in four bytes.
void pushUnits(de265_decoder_context* context, ByteView data) {
  for (ISOBaseMedia::Cursor units(data); !units.atEnd();) {
    if (units.rest().size() < 4) throw Refusal{"stray bytes after a NAL unit"};
    const std::uint64_t length = units.number(4);
    const ByteView unit = units.take(length);
    if (unit.size() < length) throw Refusal{"a NAL unit is cut short"};
    const de265_error error =
        de265_push_NAL(context, unit.data(), static_cast<int>(length), 0, nullptr);
    if (error != DE265_OK) throw Refusal{de265_get_error_text(error)};
  }
}

/// Throws Refusal for every warning but those about supplemental messages (SEI): a picture is whole
/// without them.
void refuseComplaints(de265_decoder_context* context) {
  for (;;) {
    const de265_error warning = de265_get_warning(context);
    if (warning == DE265_OK) return;
    if (warning != DE265_ERROR_CANNOT_PROCESS_SEI &&
        warning != DE265_WARNING_SPS_MISSING_CANNOT_DECODE_SEI) {
      throw Refusal{de265_get_error_text(warning)};
    }
  }
}

/// Decodes the one picture whose NAL units have been pushed.
HEIFImage decodePicture(de265_decoder_context* context) {
  if (de265_flush_data(context) != DE265_OK) throw std::bad_alloc();
  HEIFImage result;
  for (int more = 1; more != 0;) {
    const de265_error error = de265_decode(context, &more);
    if (error != DE265_OK) throw Refusal{de265_get_error_text(error)};
    refuseComplaints(context);
    const de265_image* picture = de265_get_next_picture(context);
    if (picture == nullptr) continue;
    if (result != nullptr) throw Refusal{"more than one picture"};
    const Planes* planes = planesOf(picture);
    if (planes == nullptr || !planes->front().isComplete()) {
      throw Refusal{"a part of the picture is missing"};
    }
    result = converted(picture);
  }
  if (result == nullptr) throw Refusal{"no picture"};
  return result;
}

// MARK: Plugin

const char* name() { return "libde265, strict"; }

int supports(heif_compression_format format) {
  return format == heif_compression_HEVC ? priority : 0;
}

heif_error newDecoder(void** decoder) {
  return guarded([&] { *decoder = makeContext().release(); });
}

void freeDecoder(void* decoder) { de265_free_decoder(decoder); }

heif_error pushData(void* decoder, const void* data, size_t size) {
  return guarded([&] { pushUnits(decoder, {static_cast<const std::uint8_t*>(data), size}); });
}

heif_error decodeImage(void* decoder, heif_image** image) {
  *image = nullptr;
  return guarded([&] { *image = decodePicture(decoder).release(); });
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
                                      .id_name = "libde265-strict"};

}  // namespace orvane
