#pragma once

#include <libheif/heif.h>

#include <stdexcept>

#include "platform/foundation/Handle.h"

namespace orvane {

using HEIFContext = Handle<heif_context, heif_context_free>;
using HEIFImageHandle = Handle<heif_image_handle, heif_image_handle_release>;
using HEIFImage = Handle<heif_image, heif_image_release>;
using HEIFColorProfile = Handle<heif_color_profile_nclx, heif_nclx_color_profile_free>;
using HEIFEncoder = Handle<heif_encoder, heif_encoder_release>;
using HEIFEncodingOptions = Handle<heif_encoding_options, heif_encoding_options_free>;
using HEIFDecodingOptions = Handle<heif_decoding_options, heif_decoding_options_free>;

/// libheif, and the one place that knows how its generations differ (1.15, 1.19 and later).
namespace HEIFLibrary {

class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Throws Error for anything but success.
void check(const heif_error& error);

/// An empty file, for reading into or for writing, which keeps to ImageLimits and starts no
/// threads. Throws std::bad_alloc.
HEIFContext makeContext();

/// Options for strict decoding with irot, imir and clap applied. Chroma is upsampled by repetition,
/// which is libheif's default: bilinear upsampling gives wrong colours along the borders (1.19).
/// Throws std::bad_alloc.
HEIFDecodingOptions makeDecodingOptions();

/// Options that write the colour space that the picture has. Throws std::bad_alloc.
HEIFEncodingOptions makeEncodingOptions();

/// The code points of a picture in a file, or of a decoded one; null when it has none, and when
/// libheif does not know them.
HEIFColorProfile colorProfile(const heif_image_handle* handle);
HEIFColorProfile colorProfile(const heif_image* image);

}  // namespace HEIFLibrary
}  // namespace orvane
