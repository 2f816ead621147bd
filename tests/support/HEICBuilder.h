#pragma once

#include <gtest/gtest.h>
#include <libheif/heif.h>

#include <optional>
#include <vector>

#include "platform/graphics/Image.h"

/// HEIC files made by libheif with its own x265 plugin, not the tool's. All throw
/// std::runtime_error when it does not.
namespace orvane::test {

/// How a HEIC file is to be coded: by default as lossless R, G, B.
struct HEICRecipe {
  int depth = 8;  ///< 8, 10 or 12
  heif_chroma chroma = heif_chroma_444;
  heif_matrix_coefficients matrix = heif_matrix_coefficients_RGB_GBR;
  bool isFullRange = true;
  bool isLossless = true;
  bool isMonochrome = false;  ///< the picture's first channel
  std::optional<CodePoints> codePoints = sRGBCodePoints;
  Bytes icc;                                               ///< none when empty
  heif_orientation orientation = heif_orientation_normal;  ///< written as irot and imir
  Bytes exif;                                              ///< from its TIFF header on
};

/// Whether there is the plugin.
bool canBuildHEIC();

/// A file of one or more stills of 8 or 16 bits, rgba; the first is the primary one.
Bytes buildHEIC(const std::vector<Image>& images, const HEICRecipe& recipe = {});
Bytes buildHEIC(const Image& image, const HEICRecipe& recipe = {});

/// The picture as libheif's own use of libde265 decodes it: 8 bits, R, G, B.
Image decodeWithLibheif(ByteView file);

}  // namespace orvane::test

/// For tests that need such files: visible in the summary when they cannot be made.
#define ORVANE_REQUIRE_HEIC_BUILDER() \
  if (!::orvane::test::canBuildHEIC()) GTEST_SKIP() << "libheif has no x265 plugin"
