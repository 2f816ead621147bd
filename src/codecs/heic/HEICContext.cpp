#include "codecs/heic/HEICContext.h"

#include "codecs/heic/HEVCDecoder.h"
#include "codecs/heic/HEVCEncoder.h"

namespace orvane {
namespace {

/// Registers the plugins once in the process: libheif's tables of them are not safe to fill from
/// several threads.
void registerPlugins() {
  static const bool done = [] {
    heif_init(nullptr);  // never undone: plugins may be in use until the process ends
    heif_register_decoder_plugin(&hevcDecoder);
    heif_register_encoder_plugin(&hevcEncoder);
    return true;
  }();
  static_cast<void>(done);
}

}  // namespace

HEIFContext makeHEICContext() {
  registerPlugins();
  return HEIFLibrary::makeContext();
}

HEIFEncoder makeHEVCEncoder(heif_context* context) {
  heif_encoder* encoder = nullptr;
  HEIFLibrary::check(heif_context_get_encoder_for_format(context, heif_compression_HEVC, &encoder));
  return HEIFEncoder(encoder);
}

}  // namespace orvane
