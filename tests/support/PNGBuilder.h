#pragma once

#include "support/PNGFile.h"
#include "support/TestImages.h"

/// PNG files put together without libpng, so that anything may stand in them.
namespace orvane::test {

/// Colour types of PNG clause 11.2.1.
inline constexpr std::uint8_t grayType = 0;
inline constexpr std::uint8_t rgbType = 2;
inline constexpr std::uint8_t paletteType = 3;
inline constexpr std::uint8_t grayAlphaType = 4;
inline constexpr std::uint8_t rgbaType = 6;

/// The content of a PNG file. Its rows are not filtered.
struct PNGRecipe {
  std::uint32_t width = 1;
  std::uint32_t height = 1;
  std::uint8_t colorType = rgbType;
  std::uint8_t bitDepth = 8;
  bool isInterlaced = false;
  std::function<Pixel(std::size_t x, std::size_t y)> pixelAt;  ///< samples as the file stores them
  std::vector<PNGChunk> beforeData;                            ///< between IHDR and IDAT
  std::vector<PNGChunk> afterData;                             ///< between IDAT and IEND
};

Bytes buildPNG(const PNGRecipe& recipe);

/// Only the header says how large the picture is: its image data is one byte.
Bytes buildPNGClaiming(std::uint32_t width, std::uint32_t height, std::uint8_t colorType);

/// The signature and these chunks.
Bytes assemblePNG(const std::vector<PNGChunk>& chunks);

/// The same file with another CRC on its first chunk of this type. Throws std::runtime_error when
/// there is none.
Bytes withWrongCRC(ByteView file, const std::string& type);

/// The rows of a picture before zlib compresses them, each after its filter byte.
Bytes scanlines(const PNGRecipe& recipe);

Bytes zlibStream(ByteView content);

/// Numbers of four bytes each, the most significant byte first.
Bytes pngIntegers(const std::vector<std::uint32_t>& values);

PNGChunk profileChunk(ByteView profile);

}  // namespace orvane::test
