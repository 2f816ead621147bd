#pragma once

#include <libheif/heif.h>

#include <memory>
#include <stdexcept>

namespace orvane {

/// Owners of libheif handles, each deleted by its own function.
template <auto free>
struct HEIFDeleter {
  template <class Handle>
  void operator()(Handle* handle) const {
    free(handle);
  }
};
using HEIFContext = std::unique_ptr<heif_context, HEIFDeleter<heif_context_free>>;
using HEIFImageHandle = std::unique_ptr<heif_image_handle, HEIFDeleter<heif_image_handle_release>>;
using HEIFImage = std::unique_ptr<heif_image, HEIFDeleter<heif_image_release>>;
using HEIFColorProfile =
    std::unique_ptr<heif_color_profile_nclx, HEIFDeleter<heif_nclx_color_profile_free>>;
using HEIFEncoder = std::unique_ptr<heif_encoder, HEIFDeleter<heif_encoder_release>>;
using HEIFEncodingOptions =
    std::unique_ptr<heif_encoding_options, HEIFDeleter<heif_encoding_options_free>>;
using HEIFDecodingOptions =
    std::unique_ptr<heif_decoding_options, HEIFDeleter<heif_decoding_options_free>>;

/// libheif, and the one place that knows how its generations differ (1.15, 1.19 and later).
namespace HEIFLibrary {

class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Throws Error for anything but success.
void check(const heif_error& error);

/// An empty file, for reading into or for writing, which keeps to ImageLimits and starts no
/// threads. HEVC is decoded by `hevcDecoder` and encoded by `hevcEncoder`. Throws std::bad_alloc.
HEIFContext makeContext();

/// Strict, with irot, imir and clap applied. Chroma is upsampled by repeating it, which libheif
/// does unless told otherwise: its bilinear way gives wrong colours along the borders (1.19).
/// Throws std::bad_alloc.
HEIFDecodingOptions makeDecodingOptions();

/// `hevcEncoder`, for pictures of `context`. Throws Error.
HEIFEncoder makeHEVCEncoder(heif_context* context);

/// With colour spaces written as the picture has them. Throws std::bad_alloc.
HEIFEncodingOptions makeEncodingOptions();

/// The code points of a picture in a file, or of a decoded one; null when there are none, or such
/// as libheif does not know.
HEIFColorProfile colorProfile(const heif_image_handle* handle);
HEIFColorProfile colorProfile(const heif_image* image);

}  // namespace HEIFLibrary
}  // namespace orvane
