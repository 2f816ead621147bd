#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "codecs/png/PNGFormat.h"
#include "platform/foundation/LocalizedError.h"

namespace orvane {

/// zlib does not compress. The user reads that the PNG file could not be encoded.
class ZlibError : public LocalizedError {
 public:
  enum class Case { compressionFailed };

  ZlibError();

  Case errorCase() const noexcept { return Case::compressionFailed; }
};

/// Whole PNG files and the pieces they are made of (ISO/IEC 15948).
namespace PNGWriter {

struct PaletteEntry {
  std::uint8_t r = 0;
  std::uint8_t g = 0;
  std::uint8_t b = 0;
  std::uint8_t a = 255;

  bool operator==(const PaletteEntry&) const = default;
};

/// Row filter types (PNG clause 9.2).
enum class Filter : std::uint8_t { none, sub, up, average, paeth };

inline constexpr std::array allFilters{Filter::none, Filter::sub, Filter::up, Filter::average,
                                       Filter::paeth};

using orvane::appendUInt32BE;
using orvane::pngSignature;

/// An indexed file of depth 8. `indices`: width × height bytes, rows from the top.
/// Throws ZlibError.
Bytes writeIndexedPNG(std::size_t width, std::size_t height, ByteView indices,
                      std::span<const PaletteEntry> palette, std::optional<ByteView> iccProfile);

/// Filters one row of `count` bytes, `bpp` bytes per pixel, into `into`. `previous` is the raw row
/// above, all zeros for the first row. Returns the sum of the magnitudes of the filtered bytes,
/// read as signed.
std::int64_t apply(Filter filter, const std::uint8_t* row, const std::uint8_t* previous,
                   std::size_t count, std::size_t bpp, std::uint8_t* into);

/// One zlib stream: level 9 up to 2 MiB of input, level 6 beyond. Throws ZlibError.
Bytes zlibCompress(ByteView bytes);

/// Appends length, type, payload and CRC (PNG clause 5.3).
void appendPNGChunk(Bytes& file, std::string_view type, ByteView payload);

/// Appends an iCCP chunk (PNG clause 11.3.2.3) unless the profile is absent or empty.
/// Throws ZlibError.
void appendICCProfileIfPresent(Bytes& file, std::optional<ByteView> iccProfile);

/// Returns signature and IHDR (PNG clause 11.2.1) of a depth-8, non-interlaced file.
Bytes beginPNG(std::size_t width, std::size_t height, std::uint8_t colorType);

/// Appends one IDAT with all rows, each after its filter byte, and IEND. Throws ZlibError, also
/// when the compressed rows are longer than a chunk can hold.
void finishPNG(Bytes& file, ByteView filteredRows);

}  // namespace PNGWriter
}  // namespace orvane
