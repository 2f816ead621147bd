#include "codecs/PictureMeasurements.h"

#include <algorithm>
#include <array>

#include "codecs/OpaqueRows.h"

namespace orvane {
namespace {

/// A step of Cb or Cr (ITU-T T.871, 0…255) that the blur and the noise of photographs rarely reach
/// from one pixel to the next.
constexpr int edge = 48;

constexpr std::size_t maximumBlocks = 65536;

bool isGray(const std::uint8_t* row, std::size_t width) {
  int differences = 0;
  for (std::size_t at = 0; at < width * 4; at += 4) {
    differences |= (row[at] ^ row[at + 1]) | (row[at] ^ row[at + 2]);
  }
  return differences == 0;
}

/// Whether the chroma jumps among two pixels of the upper row and the two below them.
bool holdsEdge(const std::uint8_t* upper, const std::uint8_t* lower) {
  const std::array pixels{upper, upper + 4, lower, lower + 4};
  // The range of a weighted sum: T.871's Cb and Cr in 256ths, without their offset.
  const auto range = [&](int red, int green, int blue) {
    std::array<int, pixels.size()> sums;
    std::ranges::transform(pixels, sums.begin(), [&](const std::uint8_t* pixel) {
      return (red * pixel[0] + green * pixel[1] + blue * pixel[2]) / 256;
    });
    const auto [least, greatest] = std::ranges::minmax(sums);
    return greatest - least;
  };
  return std::max(range(-43, -85, 128), range(128, -107, -21)) > edge;
}

/// Odd, so that the grid does not fall in step with regular layouts.
std::size_t gridStep(std::size_t columns, std::size_t rows) {
  std::size_t step = 1;
  while ((columns / step) * (rows / step) > maximumBlocks) step += 2;
  return step;
}

/// Blocks with a jump among every `step`-th block of a row of `columns` blocks.
std::size_t countEdges(const std::uint8_t* upper, const std::uint8_t* lower, std::size_t columns,
                       std::size_t step) {
  std::size_t edges = 0;
  for (std::size_t x = 0; x < columns; x += step) edges += holdsEdge(upper + x * 8, lower + x * 8);
  return edges;
}

std::size_t stepsIn(std::size_t length, std::size_t step) { return (length + step - 1) / step; }

}  // namespace

PictureMeasurements measure(const Image& image, const ImageCharacteristics& characteristics) {
  OpaqueRows rows(image);
  const std::size_t blockColumns = rows.width() / 2;
  const std::size_t blockRows = rows.height() / 2;
  const std::size_t step = gridStep(blockColumns, blockRows);
  PictureMeasurements result{.characteristics = characteristics, .isGray = true};
  std::size_t edges = 0;
  for (std::size_t y = 0; y < rows.height(); y += 2) {
    const bool isOnGrid = y / 2 % step == 0 && y / 2 < blockRows;
    if (!isOnGrid && !result.isGray) continue;
    const auto pair = rows.read(y, 2);
    for (const std::uint8_t* row : pair) result.isGray = result.isGray && isGray(row, rows.width());
    if (isOnGrid && !result.isGray) edges += countEdges(pair[0], pair[1], blockColumns, step);
  }
  const std::size_t blocks = stepsIn(blockColumns, step) * stepsIn(blockRows, step);
  if (blocks > 0) result.chromaEdgeShare = static_cast<double>(edges) / static_cast<double>(blocks);
  return result;
}

}  // namespace orvane
