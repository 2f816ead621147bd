#include "codecs/png/PNGWriter.h"

#include <zlib.h>

#include <algorithm>
#include <cstdlib>

#include "picture/ImageProcessingError.h"
#include "platform/foundation/Precondition.h"

namespace orvane {

ZlibError::ZlibError()
    : LocalizedError(
          ImageProcessingError::encodingFailed(ImageFormat::png).localizedDescription()) {}

namespace PNGWriter {
namespace {

constexpr std::uint8_t indexedColor = 3;

void appendText(Bytes& bytes, std::string_view text) {
  bytes.insert(bytes.end(), text.begin(), text.end());
}

bool isOpaque(const PaletteEntry& entry) { return entry.a == 255; }

Bytes colorsOf(std::span<const PaletteEntry> palette) {
  Bytes colors;
  colors.reserve(palette.size() * 3);
  for (const PaletteEntry& entry : palette) {
    colors.insert(colors.end(), {entry.r, entry.g, entry.b});
  }
  return colors;
}

Bytes alphasOf(std::span<const PaletteEntry> palette) {
  Bytes alphas(palette.size());
  std::ranges::transform(palette, alphas.begin(), &PaletteEntry::a);
  return alphas;
}

/// The predictor of PNG clause 9.4, with p - a = b - c, p - b = a - c, p - c = (b - c) + (a - c).
struct Paeth {
  std::uint8_t operator()(std::int16_t a, std::int16_t b, std::int16_t c) const {
    const auto fromA = static_cast<std::int16_t>(b - c);
    const auto fromB = static_cast<std::int16_t>(a - c);
    const auto pa = static_cast<std::int16_t>(std::abs(fromA));
    const auto pb = static_cast<std::int16_t>(std::abs(fromB));
    const auto pc = static_cast<std::int16_t>(std::abs(fromA + fromB));
    const std::int16_t bOrC = pb <= pc ? b : c;
    return static_cast<std::uint8_t>(pa <= pb && pa <= pc ? a : bOrC);
  }
};

// The filter loops have neither branches nor aliases, so that the compiler vectorises them.

template <typename Predictor>
void filterRow(Predictor predict, const std::uint8_t* __restrict row,
               const std::uint8_t* __restrict previous, std::size_t count, std::size_t bpp,
               std::uint8_t* __restrict into) {
  const std::size_t first = std::min(bpp, count);
  for (std::size_t x = 0; x < first; ++x) {
    into[x] = static_cast<std::uint8_t>(row[x] - predict(0, previous[x], 0));
  }
  for (std::size_t x = first; x < count; ++x) {
    into[x] =
        static_cast<std::uint8_t>(row[x] - predict(row[x - bpp], previous[x], previous[x - bpp]));
  }
}

std::uint8_t magnitude(std::uint8_t byte) {
  return std::min(byte, static_cast<std::uint8_t>(-byte));
}

/// Sums blocks of 256 bytes in 16 bits (256 × 128 fits), so that a vector holds many sums.
std::int64_t costOf(const std::uint8_t* filtered, std::size_t count) {
  constexpr std::size_t blockSize = 256;
  std::int64_t cost = 0;
  for (std::size_t x = 0; x < count;) {
    const std::size_t end = std::min(count, x + blockSize);
    std::uint16_t sum = 0;
    for (; x < end; ++x) sum = static_cast<std::uint16_t>(sum + magnitude(filtered[x]));
    cost += sum;
  }
  return cost;
}

}  // namespace

void appendPNGChunk(Bytes& file, std::string_view type, ByteView payload) {
  appendUInt32BE(file, exactly<std::uint32_t>(payload.size()));
  const std::size_t checked = file.size();
  appendText(file, type);
  file.insert(file.end(), payload.begin(), payload.end());
  const uLong crc = crc32_z(crc32(0, nullptr, 0), file.data() + checked, file.size() - checked);
  appendUInt32BE(file, static_cast<std::uint32_t>(crc));
}

std::int64_t apply(Filter filter, const std::uint8_t* row, const std::uint8_t* previous,
                   std::size_t count, std::size_t bpp, std::uint8_t* into) {
  const auto run = [&](auto predict) { filterRow(predict, row, previous, count, bpp, into); };
  switch (filter) {
    case Filter::none:
      std::copy_n(row, count, into);
      break;
    case Filter::sub:
      run([](int a, int, int) { return a; });
      break;
    case Filter::up:
      run([](int, int b, int) { return b; });
      break;
    case Filter::average:
      run([](int a, int b, int) { return (a + b) / 2; });
      break;
    case Filter::paeth:
      run(Paeth{});
      break;
  }
  return costOf(into, count);
}

Bytes zlibCompress(ByteView bytes) {
  constexpr std::size_t thoroughLimit = std::size_t{2} << 20;
  const int level = bytes.size() <= thoroughLimit ? 9 : 6;
  uLongf size = compressBound(bytes.size());
  Bytes compressed(size);
  if (compress2(compressed.data(), &size, bytes.data(), bytes.size(), level) != Z_OK) {
    throw ZlibError();
  }
  compressed.resize(size);
  return compressed;
}

void appendICCProfileIfPresent(Bytes& file, std::optional<ByteView> iccProfile) {
  if (!iccProfile || iccProfile->empty()) return;
  Bytes payload;
  appendText(payload, "ICC profile");
  payload.insert(payload.end(), {0, 0});  // the name's end; compression method deflate
  const Bytes compressed = zlibCompress(*iccProfile);
  payload.insert(payload.end(), compressed.begin(), compressed.end());
  appendPNGChunk(file, "iCCP", payload);
}

Bytes beginPNG(std::size_t width, std::size_t height, std::uint8_t colorType) {
  Bytes header;
  appendUInt32BE(header, exactly<std::uint32_t>(width));
  appendUInt32BE(header, exactly<std::uint32_t>(height));
  // Bit depth; colour type; compression, filter and interlace methods.
  header.insert(header.end(), {8, colorType, 0, 0, 0});
  Bytes file(pngSignature.begin(), pngSignature.end());
  appendPNGChunk(file, "IHDR", header);
  return file;
}

void finishPNG(Bytes& file, ByteView filteredRows) {
  const Bytes compressed = zlibCompress(filteredRows);
  if (compressed.size() > PNGChunkSize::largestPayload) throw ZlibError();
  file.reserve(file.size() + compressed.size() + 2 * PNGChunkSize::allButPayload);
  appendPNGChunk(file, "IDAT", compressed);
  appendPNGChunk(file, "IEND", {});
}

Bytes writeIndexedPNG(std::size_t width, std::size_t height, ByteView indices,
                      std::span<const PaletteEntry> palette, std::optional<ByteView> iccProfile) {
  Bytes file = beginPNG(width, height, indexedColor);
  precondition(indices.size() == width * height);
  appendICCProfileIfPresent(file, iccProfile);
  appendPNGChunk(file, "PLTE", colorsOf(palette));
  if (!std::ranges::all_of(palette, isOpaque)) appendPNGChunk(file, "tRNS", alphasOf(palette));

  Bytes rows;
  rows.reserve((width + 1) * height);
  for (std::size_t y = 0; y < height; ++y) {
    rows.push_back(static_cast<std::uint8_t>(Filter::none));
    const ByteView row = indices.subspan(y * width, width);
    rows.insert(rows.end(), row.begin(), row.end());
  }
  finishPNG(file, rows);
  return file;
}

}  // namespace PNGWriter
}  // namespace orvane
