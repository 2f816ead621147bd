#include "codecs/heic/HEIFLibrary.h"

#include "codecs/ImageLimits.h"
#include "platform/foundation/Memory.h"

// libheif 1.19 added security limits. The version has a byte for each of its three numbers.
#define ORVANE_LIBHEIF_HAS_SECURITY_LIMITS (LIBHEIF_NUMERIC_VERSION >= 0x01130000)

namespace orvane::HEIFLibrary {
namespace {

void setLimits(heif_context* context) {
#if ORVANE_LIBHEIF_HAS_SECURITY_LIMITS
  heif_security_limits& limits = *heif_context_get_security_limits(context);
  limits.max_image_size_pixels = ImageLimits::maximumPixels;
  limits.max_memory_block_size = Memory::usable() / 2;
  limits.max_color_profile_size = ImageLimits::maximumICCBytes;
#else
  heif_context_set_maximum_image_size_limit(context, static_cast<int>(ImageLimits::maximumSide));
#endif
}

/// Takes over a profile that `get` has made even when `get` fails: libheif 1.15 does not free it.
template <class Source>
HEIFColorProfile profileBy(heif_error (*get)(const Source*, heif_color_profile_nclx**),
                           const Source* source) {
  heif_color_profile_nclx* made = nullptr;
  const heif_error error = get(source, &made);
  HEIFColorProfile profile(made);
  if (error.code != heif_error_Ok) profile.reset();
  return profile;
}

}  // namespace

void check(const heif_error& error) {
  if (error.code != heif_error_Ok) throw Error(error.message);
}

HEIFContext makeContext() {
  HEIFContext context = owned<HEIFContext>(heif_context_alloc());
  heif_context_set_max_decoding_threads(context.get(), 0);
  setLimits(context.get());
  return context;
}

HEIFDecodingOptions makeDecodingOptions() {
  HEIFDecodingOptions options = owned<HEIFDecodingOptions>(heif_decoding_options_alloc());
  options->strict_decoding = 1;
  return options;
}

HEIFEncodingOptions makeEncodingOptions() {
  HEIFEncodingOptions options = owned<HEIFEncodingOptions>(heif_encoding_options_alloc());
  // libheif 1.15 omits code points by default, as iOS 12 could not read them. Write them.
  options->macOS_compatibility_workaround_no_nclx_profile = 0;
  return options;
}

HEIFColorProfile colorProfile(const heif_image_handle* handle) {
  return profileBy(heif_image_handle_get_nclx_color_profile, handle);
}

HEIFColorProfile colorProfile(const heif_image* image) {
  return profileBy(heif_image_get_nclx_color_profile, image);
}

}  // namespace orvane::HEIFLibrary
