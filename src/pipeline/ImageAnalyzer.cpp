#include "pipeline/ImageAnalyzer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace orvane::ImageAnalyzer {
namespace {

constexpr double maximumSamples = 1'200'000;

/// Distinct RGB triples, counted up to a limit: a hash table with linear probing that never fills
/// beyond a quarter.
class ColorCounter {
 public:
  static constexpr std::int64_t limit = 16384;

  void add(const std::uint8_t* pixel) {
    if (isCapped()) return;
    const std::uint32_t key = pixel[0] << 16 | pixel[1] << 8 | pixel[2];
    if (key == latest_) return;
    latest_ = key;
    std::size_t slot = key * goldenRatio >> 16;
    while (slots_[slot] != empty && slots_[slot] != key) slot = (slot + 1) % slotCount;
    if (slots_[slot] == key) return;
    slots_[slot] = key;
    ++count_;
  }

  std::int64_t count() const { return count_; }
  bool isCapped() const { return count_ >= limit; }

 private:
  static constexpr std::size_t slotCount = 65536;
  static constexpr std::uint32_t empty = 0xFFFFFFFF;
  static constexpr std::uint32_t goldenRatio = 0x9E3779B1;  ///< 2³² / φ, made odd

  std::vector<std::uint32_t> slots_ = std::vector<std::uint32_t>(slotCount, empty);
  std::uint32_t latest_ = empty;  ///< spares the search: neighbours are often alike
  std::int64_t count_ = 0;
};

/// The products of luma (ITU-R BT.601), made once. `luma` adds them from left to right: another
/// order rounds differently, and a gradient of exactly 0 would be missed.
struct LumaTables {
  std::array<double, 256> red, green, blue;
};

constexpr LumaTables makeLumaTables() {
  LumaTables tables{};
  for (std::size_t value = 0; value < 256; ++value) {
    tables.red[value] = 0.299 * static_cast<double>(value);
    tables.green[value] = 0.587 * static_cast<double>(value);
    tables.blue[value] = 0.114 * static_cast<double>(value);
  }
  return tables;
}
constexpr LumaTables lumaTables = makeLumaTables();

double luma(const std::uint8_t* pixel) {
  return lumaTables.red[pixel[0]] + lumaTables.green[pixel[1]] + lumaTables.blue[pixel[2]];
}

/// Sums over the samples.
struct Tally {
  std::int64_t samples = 0;
  std::int64_t flat = 0;
  std::int64_t edges = 0;
  std::int64_t gentle = 0;
  double laplacianSum = 0;
  bool hasPartialTransparency = false;
  ColorCounter colors;

  /// Takes a pixel with four neighbours; rows are `stride` bytes apart.
  void add(const std::uint8_t* pixel, std::size_t stride) {
    ++samples;
    colors.add(pixel);
    hasPartialTransparency |= pixel[3] != 0 && pixel[3] != 255;
    const double center = luma(pixel);
    const double right = luma(pixel + 4);
    const double lower = luma(pixel + stride);
    const double gradient = std::max(std::abs(center - right), std::abs(center - lower));
    flat += gradient == 0 ? 1 : 0;
    if (gradient >= 24) {
      ++edges;
      return;
    }
    gentle += gradient >= 0.5 && gradient <= 4 ? 1 : 0;
    const double left = luma(pixel - 4);
    const double upper = luma(pixel - stride);
    laplacianSum += std::abs(4 * center - left - right - upper - lower);
  }
};

/// Pixels from one sample to the next, along both axes.
std::size_t samplingStride(const RGBABuffer& buffer) {
  const auto pixels = static_cast<double>(buffer.width * buffer.height);
  return static_cast<std::size_t>(std::ceil(std::sqrt(pixels / maximumSamples)));
}

/// Leaves the border out, so that every sample has four neighbours.
Tally tally(const RGBABuffer& buffer) {
  const std::size_t step = samplingStride(buffer);
  const std::size_t stride = buffer.width * 4;
  Tally tally;
  for (std::size_t y = 1; y < buffer.height - 1; y += step) {
    const std::uint8_t* row = &buffer.pixels[y * stride];
    for (std::size_t x = 1; x < buffer.width - 1; x += step) tally.add(row + x * 4, stride);
  }
  return tally;
}

/// The first class that matches. Flat graphics have up to 4096 colours; counting goes on to 16384
/// to tell pictures of very many colours from those of merely more than 4096.
ContentClass contentClass(const ImageCharacteristics& statistics) {
  if (!statistics.uniqueColorsCapped && statistics.uniqueColorCount <= 4096 &&
      statistics.flatFraction > 0.45) {
    return ContentClass::flatGraphic;
  }
  if (statistics.flatFraction > 0.35 && statistics.edgeFraction > 0.01) {
    return ContentClass::screenContent;
  }
  if (!statistics.uniqueColorsCapped && statistics.noiseLevel < 3 &&
      statistics.flatFraction > 0.08) {
    return ContentClass::illustration;
  }
  return statistics.noiseLevel > 8 ? ContentClass::detailedPhoto : ContentClass::photo;
}

}  // namespace

ImageCharacteristics analyze(const RGBABuffer& buffer) {
  ImageCharacteristics result{.width = static_cast<std::int64_t>(buffer.width),
                              .height = static_cast<std::int64_t>(buffer.height),
                              .contentClass = ContentClass::flatGraphic,
                              .uniqueColorCount = 1,
                              .flatFraction = 1,
                              .hasAlpha = buffer.hasAlpha};
  if (buffer.width < 3 || buffer.height < 3) return result;

  const Tally found = tally(buffer);
  const auto share = [&](std::int64_t count) {
    return static_cast<double>(count) / static_cast<double>(found.samples);
  };
  const std::int64_t smooth = found.samples - found.edges;
  result.uniqueColorCount = found.colors.count();
  result.uniqueColorsCapped = found.colors.isCapped();
  result.flatFraction = share(found.flat);
  result.edgeFraction = share(found.edges);
  result.gradientFraction = share(found.gentle);
  result.noiseLevel = smooth == 0 ? 0 : found.laplacianSum / static_cast<double>(smooth);
  result.hasPartialTransparency = found.hasPartialTransparency;
  result.contentClass = contentClass(result);
  return result;
}

}  // namespace orvane::ImageAnalyzer
