#include "codecs/look/PictureSample.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "codecs/OpaqueRows.h"

namespace orvane {
namespace {

/// How many bands of `side` pixels there are, when so many are wanted: at least one, and no more
/// than `length` pixels hold.
std::size_t countOf(double wanted, std::size_t length, std::size_t side) {
  return std::clamp<std::size_t>(static_cast<std::size_t>(std::lround(wanted)), 1, length / side);
}

/// The first pixel of each of `count` bands of `side` pixels, which lie in the middle of equal
/// parts of `length`.
std::vector<std::size_t> beginnings(std::size_t count, std::size_t length, std::size_t side) {
  constexpr std::size_t grid = 16;
  std::vector<std::size_t> result(count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t middle = (2 * i + 1) * length / (2 * count);
    result[i] = (middle - std::min(middle, side / 2)) / grid * grid;
  }
  return result;
}

/// Where the bands of columns and rows of a picture cross: squares.
struct Crossings {
  std::size_t side;  ///< pixels
  std::vector<std::size_t> lefts;
  std::vector<std::size_t> tops;
};

std::optional<Crossings> crossingsIn(const Image& image, const SampleShape& shape) {
  const std::size_t side = shape.bandOf(image);
  if (std::min(image.width, image.height) < side) return std::nullopt;
  const auto columns = static_cast<double>(image.width);
  const auto rows = static_cast<double>(image.height);
  const double pixels = std::min(columns * rows / 3, static_cast<double>(shape.mostPixels));
  const double squares = pixels / static_cast<double>(side * side);
  const std::size_t across = countOf(std::sqrt(squares * columns / rows), image.width, side);
  const std::size_t down = countOf(squares / static_cast<double>(across), image.height, side);
  if (across * down < 4) return std::nullopt;
  return Crossings{side, beginnings(across, image.width, side),
                   beginnings(down, image.height, side)};
}

}  // namespace

std::size_t SampleShape::bandOf(const Image& image) const {
  constexpr std::size_t largePicture = 1'500'000;  // pixels
  return image.width * image.height >= largePicture ? bandOfLarge : bandOfSmall;
}

std::optional<Image> sampleOf(const Image& image, const SampleShape& shape) {
  OpaqueRows rows(image);
  const auto crossings = crossingsIn(image, shape);
  if (!crossings) return std::nullopt;
  const auto& [side, lefts, tops] = *crossings;
  Image sample{
      .width = lefts.size() * side, .height = tops.size() * side, .colorSpace = rows.colorSpace()};
  std::uint8_t* out = allocatePackedRows(sample);
  for (const std::size_t top : tops) {
    for (std::size_t y = top; y < top + side; ++y) {
      const std::uint8_t* const row = rows.read(y, 1).front();
      for (const std::size_t left : lefts) out = std::copy_n(row + left * 4, side * 4, out);
    }
  }
  return sample;
}

}  // namespace orvane
