#include "codecs/png/PNGQuantEncoder.h"

#include <omp.h>

#include <algorithm>
#include <array>
#include <limits>
#include <span>
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

/// Filters rows, each with its own filter type.
class RowFilter {
 public:
  RowFilter(EncodingPlan::Effort effort, std::size_t count, std::size_t bpp)
      : bpp_(bpp), candidate_(count), best_(count) {
    static constexpr std::array paeth{PNGWriter::Filter::paeth};
    if (effort == EncodingPlan::Effort::fast) filters_ = paeth;
  }

  /// Appends the filter type of least cost, the first of equals, and the filtered row.
  void append(const Bytes& row, const Bytes& previous, Bytes& filtered) {
    auto bestFilter = PNGWriter::Filter::none;
    auto bestCost = std::numeric_limits<std::int64_t>::max();
    for (const PNGWriter::Filter filter : filters_) {
      const std::int64_t cost = PNGWriter::apply(filter, row.data(), previous.data(), row.size(),
                                                 bpp_, candidate_.data());
      if (cost >= bestCost) continue;
      bestCost = cost;
      bestFilter = filter;
      std::swap(candidate_, best_);
    }
    filtered.push_back(static_cast<std::uint8_t>(bestFilter));
    filtered.insert(filtered.end(), best_.begin(), best_.end());
  }

 private:
  std::span<const PNGWriter::Filter> filters_ = PNGWriter::allFilters;
  std::size_t bpp_;
  Bytes candidate_;
  Bytes best_;
};

/// The filtered rows of a truecolour file, without the alpha of an opaque picture.
Bytes filteredRows(const RGBABuffer& rgba, EncodingPlan::Effort effort) {
  const std::size_t channels = rgba.hasAlpha ? 4 : 3;
  Bytes row(rgba.width * channels);
  Bytes previous(row.size());
  RowFilter filter(effort, row.size(), channels);
  Bytes filtered;
  filtered.reserve((row.size() + 1) * rgba.height);
  const std::uint8_t* pixel = rgba.pixels.data();
  for (std::size_t y = 0; y < rgba.height; ++y) {
    for (std::size_t at = 0; at < row.size(); at += channels, pixel += 4) {
      std::copy_n(pixel, channels, row.begin() + static_cast<std::ptrdiff_t>(at));
    }
    filter.append(row, previous, filtered);
    std::swap(row, previous);
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
