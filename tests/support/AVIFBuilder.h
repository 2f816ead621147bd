#pragma once

#include <avif/avif.h>

#include <optional>
#include <vector>

#include "platform/graphics/Image.h"

/// AVIF files made by libavif. All throw std::runtime_error when it does not.
namespace orvane::test {

/// How an AVIF file is to be coded: by default losslessly.
struct AVIFRecipe {
  std::uint32_t depth = 8;
  avifPixelFormat format = AVIF_PIXEL_FORMAT_YUV444;
  avifRange range = AVIF_RANGE_FULL;
  avifMatrixCoefficients matrix = AVIF_MATRIX_COEFFICIENTS_IDENTITY;
  CodePoints codePoints = sRGBCodePoints;
  Bytes icc;  ///< none when empty
  bool isPremultiplied = false;
  std::optional<std::uint8_t> quarterTurns;  ///< irot, anti-clockwise
  std::optional<std::uint8_t> mirrorAxis;    ///< imir
  std::optional<avifCleanApertureBox> crop;
  Bytes exif;  ///< from its TIFF header on; none when empty
};

/// A still of an rgba picture of 8 or 16 bits.
Bytes buildAVIF(const Image& image, const AVIFRecipe& recipe = {});

/// One picture of `columns` × as many rows as the cells make, all of the same size.
Bytes buildAVIFGrid(const std::vector<Image>& cells, std::uint32_t columns);

/// A sequence, all frames of the same size.
Bytes buildAVIFSequence(const std::vector<Image>& frames);

}  // namespace orvane::test
