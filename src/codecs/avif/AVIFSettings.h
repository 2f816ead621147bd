#pragma once

#include <avif/avif.h>

#include <cstdint>

#include "picture/ImageCharacteristics.h"

/// The settings of libavif and libaom.
namespace orvane::AVIFSettings {

/// The measure by which libaom chooses.
enum class Tuning {
  imageQuality,          ///< "iq", made for stills: libaom 3.12 and later
  structuralSimilarity,  ///< libavif's default
};

/// The best one that the installed libaom knows.
Tuning bestTuning();

enum class Content {
  natural,  ///< photographs, paintings, soft drawings
  screen,   ///< text, windows, charts: libaom looks for palettes
};

/// Screens have flat areas, and most of what changes in them jumps.
Content contentOf(const ImageCharacteristics& characteristics);

/// Bits of a sample. 10 bits keep 8-bit colours through the conversion to YCbCr. Screens have few
/// colours: palettes of 8 bits make smaller files of them, in less time.
constexpr std::uint32_t depth(Content content) { return content == Content::screen ? 8 : 10; }

/// Full chroma keeps text and edges clean. For photographs too, files that look the same are
/// smaller than with 4:2:0.
inline constexpr avifPixelFormat pixelFormat = AVIF_PIXEL_FORMAT_YUV444;

/// libavif's speed, 0…10, for pictures of every size. At the same quantizer, speed 7 scores up to
/// ten points less in SSIMULACRA 2.
inline constexpr int speed = 6;

/// The tiles that a picture is cut into, as powers of two.
struct Tiles {
  int columnsLog2 = 0;
  int rowsLog2 = 0;
};

/// Tiles are what libaom shares among threads. They have at most 4 megapixels, which costs a
/// photograph of 24 megapixels about 0.1 % more bytes than the 9.4 that AV1 allows.
Tiles tiles(std::uint32_t width, std::uint32_t height);

/// Invisible loss: alpha is wrong by up to 5 of 255 along edges and exact in flat areas. Lossless
/// alpha is several times as large.
inline constexpr int alphaQuantizer = 6;

/// The quantizer for a quality of 0…1: 1…63, fewest bits at 63.
int colorQuantizer(double quality, Tuning tuning);

}  // namespace orvane::AVIFSettings
