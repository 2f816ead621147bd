#pragma once

#include <avif/avif.h>

#include <cstdint>

#include "picture/ImageCharacteristics.h"

/// What libavif and libaom are set to.
namespace orvane::AVIFSettings {

/// What libaom weighs its choices by.
enum class Tuning {
  imageQuality,          ///< "iq", made for stills: libaom 3.12 and later
  structuralSimilarity,  ///< what libavif takes by itself
};

enum class Content {
  natural,  ///< photographs, paintings, soft drawings
  screen,   ///< text, windows, charts: libaom looks for palettes
};

/// Screens have flat areas, and most of what changes in them jumps.
Content contentOf(const ImageCharacteristics& characteristics);

/// 10 bits keep 8-bit colours through the conversion to YCbCr. Of what is on a screen palettes of 8
/// bits make smaller files, in less time.
constexpr std::uint32_t depth(Content content) { return content == Content::screen ? 8 : 10; }

/// Whole chroma keeps text and edges clean. Of photographs too, it makes smaller files of the same
/// look than 4:2:0 does.
inline constexpr avifPixelFormat pixelFormat = AVIF_PIXEL_FORMAT_YUV444;

/// libavif's, 0…10. The same for every size: the next one looks up to ten points worse at the same
/// quantizer.
inline constexpr int speed = 6;

/// Nothing to be seen: on soft and hard edges up to 5 of 255 off, flat areas exact. Lossless alpha
/// is several times as large.
inline constexpr int alphaQuantizer = 6;

/// 1…63, fewest bits at 63. `quality` is 0…1.
int colorQuantizer(double quality, Tuning tuning);

}  // namespace orvane::AVIFSettings
