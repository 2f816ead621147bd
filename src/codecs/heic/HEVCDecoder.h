#pragma once

#include <libheif/heif_plugin.h>

namespace orvane {

/// HEVC (ITU-T H.265) decoding by libde265 for libheif. It takes the place of libheif's own use of
/// libde265, which lets damaged pictures pass and starts a thread for each: this one decodes on the
/// calling thread, checks ImageLimits before picture memory is taken, and refuses a picture that
/// the decoder has complaints about or whose slices do not cover it.
extern const heif_decoder_plugin hevcDecoder;

}  // namespace orvane
