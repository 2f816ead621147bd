#pragma once

#include <avif/avif.h>

#include <cstddef>
#include <cstdint>

namespace orvane {

/// What one quality is to libaom.
struct AVIFSettings {
  /// What libaom weighs its choices by.
  enum class Tuning {
    imageQuality,          ///< "iq", made for stills: libaom 3.12 and later
    structuralSimilarity,  ///< what libavif takes by itself
  };

  /// 10 bits keep 8-bit colours through the conversion to YCbCr, and whole chroma keeps text and
  /// edges clean. Of photographs too, the two make smaller files of the same look than 8 bits and
  /// 4:2:0 do in the same time.
  static constexpr std::uint32_t depth = 10;
  static constexpr avifPixelFormat pixelFormat = AVIF_PIXEL_FORMAT_YUV444;

  /// Nothing to be seen: on soft and hard edges up to 5 of 255 off, flat areas exact. Lossless
  /// alpha is several times as large.
  static constexpr int alphaQuantizer = 6;

  int colorQuantizer = 0;  ///< 1…63, fewest bits at 63
  int speed = 0;           ///< libavif's, 0…10

  /// `quality` is 0…1.
  static AVIFSettings forPicture(double quality, std::size_t pixelCount, Tuning tuning);
};

}  // namespace orvane
