#include "support/PNGFile.h"

#include <png.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <stdexcept>

namespace orvane::test {
namespace {

constexpr std::array<std::uint8_t, 8> signature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

/// PNG annex D, bit by bit.
std::uint32_t crcOf(ByteView bytes) {
  std::uint32_t crc = 0xFFFFFFFF;
  for (const std::uint8_t byte : bytes) {
    crc ^= byte;
    for (int bit = 0; bit < 8; ++bit) crc = (crc & 1) != 0 ? (crc >> 1) ^ 0xEDB88320 : crc >> 1;
  }
  return ~crc;
}

std::uint32_t readUInt32(ByteView bytes) {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
         std::uint32_t{bytes[2]} << 8 | bytes[3];
}

void append(Bytes& to, std::uint32_t value) {
  for (int byte = 3; byte >= 0; --byte) to.push_back((value >> (byte * 8)) & 0xFF);
}

}  // namespace

std::vector<PNGChunk> pngChunks(ByteView file) {
  if (file.size() < 8 || !std::ranges::equal(file.first(8), signature)) {
    throw std::runtime_error("no PNG signature");
  }
  std::vector<PNGChunk> chunks;
  for (ByteView rest = file.subspan(8); !rest.empty();) {
    if (rest.size() < 12) throw std::runtime_error("stray bytes");
    const std::size_t length = readUInt32(rest);
    if (rest.size() - 12 < length) throw std::runtime_error("truncated chunk");
    const ByteView checked = rest.subspan(4, 4 + length);
    if (crcOf(checked) != readUInt32(rest.subspan(8 + length))) {
      throw std::runtime_error("wrong CRC");
    }
    chunks.push_back({std::string(checked.begin(), checked.begin() + 4),
                      Bytes(checked.begin() + 4, checked.end())});
    rest = rest.subspan(12 + length);
  }
  return chunks;
}

std::string chunkTypes(const std::vector<PNGChunk>& chunks) {
  std::string types;
  for (const PNGChunk& chunk : chunks) types += (types.empty() ? "" : " ") + chunk.type;
  return types;
}

Bytes chunkPayload(const std::vector<PNGChunk>& chunks, const std::string& type) {
  const auto found = std::ranges::find(chunks, type, &PNGChunk::type);
  if (found == chunks.end()) throw std::runtime_error("no " + type);
  return found->payload;
}

Bytes pngChunk(const PNGChunk& chunk) {
  Bytes checked(chunk.type.begin(), chunk.type.end());
  checked.insert(checked.end(), chunk.payload.begin(), chunk.payload.end());
  Bytes bytes;
  append(bytes, static_cast<std::uint32_t>(chunk.payload.size()));
  bytes.insert(bytes.end(), checked.begin(), checked.end());
  append(bytes, crcOf(checked));
  return bytes;
}

Bytes inflated(ByteView stream) {
  for (std::size_t capacity = stream.size() * 4 + 1024;; capacity *= 4) {
    Bytes bytes(capacity);
    uLongf size = capacity;
    const int status = uncompress(bytes.data(), &size, stream.data(), stream.size());
    if (status == Z_BUF_ERROR && capacity < (std::size_t{1} << 31)) continue;
    if (status != Z_OK) throw std::runtime_error("broken zlib stream");
    bytes.resize(size);
    return bytes;
  }
}

PNGPixels readPNG(ByteView file) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  PNGPixels pixels;
  if (png_image_begin_read_from_memory(&image, file.data(), file.size()) != 0) {
    image.format = PNG_FORMAT_RGBA;
    pixels.width = image.width;
    pixels.height = image.height;
    pixels.rgba.resize(PNG_IMAGE_SIZE(image));
    png_image_finish_read(&image, nullptr, pixels.rgba.data(), 0, nullptr);
  }
  const bool clean = image.warning_or_error == 0;
  const std::string message = image.message;
  png_image_free(&image);
  if (!clean) throw std::runtime_error(message);
  return pixels;
}

}  // namespace orvane::test
