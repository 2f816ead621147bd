#include "support/PNGBuilder.h"

#include <zlib.h>

#include <array>
#include <stdexcept>

namespace orvane::test {
namespace {

constexpr std::array<std::uint8_t, 8> signature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

struct Pass {
  std::size_t x, y, stepX, stepY;
};

/// PNG clause 8.2.
constexpr std::array<Pass, 7> adam7{{{0, 0, 8, 8},
                                     {4, 0, 8, 8},
                                     {0, 4, 4, 8},
                                     {2, 0, 4, 4},
                                     {0, 2, 2, 4},
                                     {1, 0, 2, 2},
                                     {0, 1, 1, 2}}};

std::size_t samplesPerPixel(std::uint8_t colorType) {
  switch (colorType) {
    case rgbType:
      return 3;
    case grayAlphaType:
      return 2;
    case rgbaType:
      return 4;
    default:
      return 1;
  }
}

/// Packs samples of less than 8 bits, the first in the highest bits.
class RowPacker {
 public:
  RowPacker(Bytes& out, int bitDepth) : out_(out), bitDepth_(bitDepth) {}

  void append(std::uint16_t sample) {
    if (bitDepth_ == 16) out_.push_back(static_cast<std::uint8_t>(sample >> 8));
    if (bitDepth_ >= 8) {
      out_.push_back(static_cast<std::uint8_t>(sample));
      return;
    }
    if (usedBits_ == 0) out_.push_back(0);
    usedBits_ += bitDepth_;
    out_.back() = static_cast<std::uint8_t>(out_.back() | sample << (8 - usedBits_));
    usedBits_ %= 8;
  }

 private:
  Bytes& out_;
  int bitDepth_;
  int usedBits_ = 0;
};

void appendPass(Bytes& out, const PNGRecipe& recipe, const Pass& pass) {
  if (pass.x >= recipe.width) return;
  for (std::size_t y = pass.y; y < recipe.height; y += pass.stepY) {
    out.push_back(0);  // filter type none
    RowPacker row(out, recipe.bitDepth);
    for (std::size_t x = pass.x; x < recipe.width; x += pass.stepX) {
      const Pixel pixel = recipe.pixelAt ? recipe.pixelAt(x, y) : Pixel{};
      for (std::size_t s = 0; s < samplesPerPixel(recipe.colorType); ++s) row.append(pixel[s]);
    }
  }
}

PNGChunk header(const PNGRecipe& recipe) {
  PNGChunk chunk{"IHDR", pngIntegers({recipe.width, recipe.height})};
  const std::uint8_t interlace = recipe.isInterlaced ? 1 : 0;
  const std::array<std::uint8_t, 5> rest{recipe.bitDepth, recipe.colorType, 0, 0, interlace};
  chunk.payload.insert(chunk.payload.end(), rest.begin(), rest.end());
  return chunk;
}

}  // namespace

Bytes scanlines(const PNGRecipe& recipe) {
  Bytes rows;
  if (recipe.isInterlaced) {
    for (const Pass& pass : adam7) appendPass(rows, recipe, pass);
  } else {
    appendPass(rows, recipe, {0, 0, 1, 1});
  }
  return rows;
}

Bytes zlibStream(ByteView content) {
  uLongf size = compressBound(content.size());
  Bytes stream(size);
  if (compress(stream.data(), &size, content.data(), content.size()) != Z_OK) {
    throw std::runtime_error("zlib does not compress");
  }
  stream.resize(size);
  return stream;
}

Bytes pngIntegers(const std::vector<std::uint32_t>& values) {
  Bytes bytes;
  for (const std::uint32_t value : values) {
    for (int shift = 24; shift >= 0; shift -= 8) {
      bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }
  }
  return bytes;
}

PNGChunk profileChunk(ByteView profile) {
  PNGChunk chunk{"iCCP", {'n', 'a', 'm', 'e', 0, 0}};
  const Bytes stream = zlibStream(profile);
  chunk.payload.insert(chunk.payload.end(), stream.begin(), stream.end());
  return chunk;
}

Bytes assemblePNG(const std::vector<PNGChunk>& chunks) {
  Bytes file(signature.begin(), signature.end());
  for (const PNGChunk& chunk : chunks) {
    const Bytes bytes = pngChunk(chunk);
    file.insert(file.end(), bytes.begin(), bytes.end());
  }
  return file;
}

Bytes buildPNG(const PNGRecipe& recipe) {
  std::vector<PNGChunk> chunks{header(recipe)};
  chunks.insert(chunks.end(), recipe.beforeData.begin(), recipe.beforeData.end());
  chunks.push_back({"IDAT", zlibStream(scanlines(recipe))});
  chunks.insert(chunks.end(), recipe.afterData.begin(), recipe.afterData.end());
  chunks.push_back({"IEND", {}});
  return assemblePNG(chunks);
}

Bytes buildPNGClaiming(std::uint32_t width, std::uint32_t height, std::uint8_t colorType) {
  const PNGRecipe recipe{.width = width, .height = height, .colorType = colorType};
  return assemblePNG({header(recipe), {"IDAT", zlibStream(Bytes{0})}, {"IEND", {}}});
}

Bytes withWrongCRC(ByteView file, const std::string& type) {
  Bytes damaged(signature.begin(), signature.end());
  bool isDone = false;
  for (const PNGChunk& chunk : pngChunks(file)) {
    Bytes bytes = pngChunk(chunk);
    if (chunk.type == type && !isDone) {
      bytes.back() ^= 1;
      isDone = true;
    }
    damaged.insert(damaged.end(), bytes.begin(), bytes.end());
  }
  if (!isDone) throw std::runtime_error("no " + type);
  return damaged;
}

}  // namespace orvane::test
