#include "codecs/look/PictureSample.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "codecs/OpaqueRows.h"

namespace orvane {
namespace {

std::size_t countOf(double bands, std::size_t length, std::size_t side) {
  return std::clamp<std::size_t>(static_cast<std::size_t>(std::lround(bands)), 1, length / side);
}

/// Where each of `count` bands of `side` pixels begins, in the middle of equal parts of `length`.
std::vector<std::size_t> bands(std::size_t count, std::size_t length, std::size_t side) {
  constexpr std::size_t grid = 16;
  std::vector<std::size_t> result(count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t middle = (2 * i + 1) * length / (2 * count);
    result[i] = (middle - std::min(middle, side / 2)) / grid * grid;
  }
  return result;
}

}  // namespace

std::optional<Image> sampleOf(const Image& image, const SampleShape& shape) {
  OpaqueRows rows(image);
  constexpr std::size_t largePicture = 1'500'000;  // pixels
  const bool isLarge = rows.width() * rows.height() >= largePicture;
  const std::size_t side = isLarge ? shape.bandOfLarge : shape.band;
  if (std::min(rows.width(), rows.height()) < side) return std::nullopt;
  const auto width = static_cast<double>(rows.width());
  const auto height = static_cast<double>(rows.height());
  const double pixels = std::min(width * height / 3, static_cast<double>(shape.mostPixels));
  const double squares = pixels / static_cast<double>(side * side);
  const std::size_t columns = countOf(std::sqrt(squares * width / height), rows.width(), side);
  const std::size_t lines = countOf(squares / static_cast<double>(columns), rows.height(), side);
  if (columns * lines < 4) return std::nullopt;

  Image sample{.width = columns * side, .height = lines * side, .colorSpace = rows.colorSpace()};
  std::uint8_t* out = allocatePackedRows(sample);
  const std::vector<std::size_t> lefts = bands(columns, rows.width(), side);
  for (const std::size_t top : bands(lines, rows.height(), side)) {
    for (std::size_t y = top; y < top + side; ++y) {
      const std::uint8_t* const row = rows.read(y, 1).front();
      for (const std::size_t left : lefts) {
        std::memcpy(out, row + left * 4, side * 4);
        out += side * 4;
      }
    }
  }
  return sample;
}

}  // namespace orvane
