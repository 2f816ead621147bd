#pragma once

#include <libheif/heif_plugin.h>

namespace orvane {

/// A plugin that decodes HEVC (ITU-T H.265) for libheif by libde265. libheif's own plugin accepts
/// damaged pictures and starts a thread for each picture. This one decodes on the calling thread,
/// checks ImageLimits before it takes picture memory, and refuses a picture that libde265 warns
/// about or whose slices do not cover it.
extern const heif_decoder_plugin hevcDecoder;

}  // namespace orvane
