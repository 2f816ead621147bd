#pragma once

#include <libheif/heif_plugin.h>

namespace orvane {

/// A plugin that encodes HEVC (ITU-T H.265) for libheif by x265, one still picture at a time.
/// libheif's own plugin cannot code alpha better than colours; this one codes alpha near-losslessly
/// whatever the rate factor. x265's threads work while the caller waits. The same picture gives the
/// same bytes on any number of them. Several threads may use it, each with its own encoder.
///
/// Takes 8-bit YCbCr 4:2:0, or monochrome for alpha. Its quality, which
/// heif_encoder_set_lossy_quality sets, is x265's constant rate factor in hundredths, 0…5100: a
/// lower one looks better.
extern const heif_encoder_plugin hevcEncoder;

/// The parameter that says how many threads may code a picture, where it is large: 1 without it.
inline constexpr const char* hevcEncoderThreads = "threads";

/// The parameter that says whether a picture is a photograph: 1 or 0. The default is 0.
inline constexpr const char* hevcEncoderPhotograph = "photograph";

}  // namespace orvane
