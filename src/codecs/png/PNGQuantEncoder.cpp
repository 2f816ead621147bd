#include "codecs/png/PNGQuantEncoder.h"

#include <omp.h>

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "picture/ColorProfile.h"
#include "picture/ImageProcessingError.h"
#include "platform/foundation/Memory.h"
#include "platform/foundation/Precondition.h"

namespace orvane::PNGQuantEncoder {
namespace {

using LiqImage = Handle<liq_image, liq_image_destroy>;
using LiqResult = Handle<liq_result, liq_result_destroy>;

/// Throws unless `succeeded`.
void require(bool succeeded) {
  if (!succeeded) throw ImageProcessingError::encodingFailed(ImageFormat::png);
}

/// libimagequant 2.17 crashes when an allocation fails. It took 69 bytes per pixel for noise, and
/// fewer above 2 megapixels, where it merges more colours.
void requireMemory(std::size_t pixels) {
  constexpr std::size_t mebibyte = std::size_t{1} << 20;
  Memory::require(mebibyte + std::min(pixels * 72, 128 * mebibyte + pixels * 16));
}

LiqResult quantized(liq_image* image, liq_attr* attr) {
  liq_result* result = nullptr;
  const liq_error status = liq_image_quantize(image, attr, &result);
  LiqResult owner(result);
  require(status == LIQ_OK && owner);
  return owner;
}

std::vector<PNGWriter::PaletteEntry> paletteOf(liq_result* result) {
  const liq_palette* palette = liq_get_palette(result);
  require(palette != nullptr);
  std::vector<PNGWriter::PaletteEntry> entries(palette->count);
  std::transform(palette->entries, palette->entries + palette->count, entries.begin(),
                 [](const liq_color& color) {
                   return PNGWriter::PaletteEntry{color.r, color.g, color.b, color.a};
                 });
  return entries;
}

/// The rows of a buffer for a truecolour file: without the alpha bytes unless it has alpha.
class TruecolorRows {
 public:
  explicit TruecolorRows(const RGBABuffer& rgba)
      : rgba_(rgba), channels_(rgba.hasAlpha ? 4 : 3), noRow_(size()) {
    if (!rgba.hasAlpha) packed_.fill(Bytes(size()));
  }

  std::size_t channels() const { return channels_; }

  /// Bytes of a row.
  std::size_t size() const { return rgba_.width * channels_; }

  /// The row above the first one.
  const std::uint8_t* zeros() const { return noRow_.data(); }

  /// Row `y`. The next call leaves it valid, the call after that does not.
  const std::uint8_t* row(std::size_t y) {
    const std::uint8_t* pixels = rgba_.pixels.data() + y * rgba_.width * 4;
    if (rgba_.hasAlpha) return pixels;
    std::uint8_t* packed = packed_[y % 2].data();
    for (std::size_t x = 0; x < rgba_.width; ++x) {
      std::copy_n(pixels + x * 4, 3, packed + x * 3);
    }
    return packed;
  }

 private:
  const RGBABuffer& rgba_;
  std::size_t channels_;
  Bytes noRow_;
  std::array<Bytes, 2> packed_;
};

/// Filters rows, each with its own filter type.
class RowFilter {
 public:
  RowFilter(EncodingPlan::Effort effort, std::size_t count, std::size_t bpp)
      : searches_(effort != EncodingPlan::Effort::fast),
        bpp_(bpp),
        candidate_(searches_ ? count : 0),
        best_(count) {}

  /// Appends the filter byte and the filtered row.
  void append(const std::uint8_t* row, const std::uint8_t* previous, Bytes& filtered) {
    const PNGWriter::Filter filter = searches_ ? search(row, previous) : applyPaeth(row, previous);
    filtered.push_back(static_cast<std::uint8_t>(filter));
    filtered.insert(filtered.end(), best_.begin(), best_.end());
  }

 private:
  PNGWriter::Filter applyPaeth(const std::uint8_t* row, const std::uint8_t* previous) {
    PNGWriter::apply(PNGWriter::Filter::paeth, row, previous, best_.size(), bpp_, best_.data());
    return PNGWriter::Filter::paeth;
  }

  /// Returns the filter of least cost, the first of equals, and leaves its output in `best_`.
  PNGWriter::Filter search(const std::uint8_t* row, const std::uint8_t* previous) {
    auto bestFilter = PNGWriter::Filter::none;
    auto bestCost = std::numeric_limits<std::int64_t>::max();
    for (const PNGWriter::Filter filter : PNGWriter::allFilters) {
      const std::int64_t cost =
          PNGWriter::apply(filter, row, previous, best_.size(), bpp_, candidate_.data());
      if (cost >= bestCost) continue;
      bestCost = cost;
      bestFilter = filter;
      std::swap(candidate_, best_);
    }
    return bestFilter;
  }

  bool searches_;
  std::size_t bpp_;
  Bytes candidate_;
  Bytes best_;
};

Bytes filteredRows(const RGBABuffer& rgba, EncodingPlan::Effort effort) {
  TruecolorRows rows(rgba);
  RowFilter filter(effort, rows.size(), rows.channels());
  Bytes filtered;
  filtered.reserve((rows.size() + 1) * rgba.height);
  const std::uint8_t* previous = rows.zeros();
  for (std::size_t y = 0; y < rgba.height; ++y) {
    const std::uint8_t* row = rows.row(y);
    filter.append(row, previous, filtered);
    previous = row;
  }
  return filtered;
}

}  // namespace

QuantizedImage quantize(liq_attr* attr, ByteView pixels, std::size_t width, std::size_t height,
                        float dithering) {
  const int columns = exactly<int>(width);
  const int rows = exactly<int>(height);
  precondition(pixels.size() == width * height * 4);
  require(!pixels.empty());
  requireMemory(width * height);
  omp_set_num_threads(1);  // for this thread: the batch already has one thread per processor

  const LiqImage image(liq_image_create_rgba(attr, pixels.data(), columns, rows, 0));
  require(image != nullptr);
  const LiqResult result = quantized(image.get(), attr);
  liq_set_dithering_level(result.get(), dithering);
  QuantizedImage output{.indices = Bytes(width * height), .palette = {}};
  require(liq_write_remapped_image(result.get(), image.get(), output.indices.data(),
                                   output.indices.size()) == LIQ_OK);
  output.palette = paletteOf(result.get());
  return output;
}

Bytes encodeLossless(const RGBABuffer& rgba, const EncodingPlan& plan) {
  constexpr std::uint8_t truecolor = 2;
  constexpr std::uint8_t truecolorWithAlpha = 6;
  Bytes file =
      PNGWriter::beginPNG(rgba.width, rgba.height, rgba.hasAlpha ? truecolorWithAlpha : truecolor);
  PNGWriter::appendICCProfileIfPresent(file, ColorProfile::embeddableICC(*rgba.colorSpace));
  PNGWriter::finishPNG(file, filteredRows(rgba, plan.effort));
  return file;
}

}  // namespace orvane::PNGQuantEncoder
