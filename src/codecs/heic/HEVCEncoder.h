#pragma once

#include <libheif/heif_plugin.h>

namespace orvane {

/// HEVC (ITU-T H.265) encoding by x265 for libheif, one still picture at a time. It takes the place
/// of libheif's own use of x265, which cannot code the alpha plane better than the colours: here
/// alpha is near-lossless whatever the rate factor. Starts no threads beside x265's one frame
/// thread, which works while the caller waits; the same picture gives the same bytes. May be used
/// by several threads, each with its own encoder.
///
/// Takes 8-bit YCbCr 4:2:0, or monochrome for alpha. Its quality, as heif_encoder_set_lossy_quality
/// sets it, is x265's constant rate factor in hundredths, 0…5100: less is better.
extern const heif_encoder_plugin hevcEncoder;

}  // namespace orvane
