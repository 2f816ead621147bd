#include "codecs/ChromaEdges.h"

#include <algorithm>

namespace orvane {
namespace {

/// More of Cb or Cr (ITU-T T.871, 0…255) than the blur and the noise of photographs change from a
/// pixel to the next.
constexpr int edge = 48;

constexpr std::size_t maximumBlocks = 65536;

class Spread {
 public:
  void add(int value) {
    lowest_ = std::min(lowest_, value);
    highest_ = std::max(highest_, value);
  }
  int size() const { return highest_ - lowest_; }

 private:
  int lowest_ = 255;
  int highest_ = -255;
};

/// Whether the chroma jumps among the two pixels of the upper row and the two of the lower.
bool holdsEdge(const std::uint8_t* upper, const std::uint8_t* lower) {
  Spread blue;
  Spread red;
  for (const std::uint8_t* pixel : {upper, upper + 4, lower, lower + 4}) {
    const int r = pixel[0], g = pixel[1], b = pixel[2];
    // T.871's Cb and Cr in 256ths, without their offset.
    blue.add((-43 * r - 85 * g + 128 * b) / 256);
    red.add((128 * r - 107 * g - 21 * b) / 256);
  }
  return std::max(blue.size(), red.size()) > edge;
}

/// Odd, so that the grid does not fall in step with the regular layouts that people and programs
/// draw.
std::size_t gridStep(std::size_t columns, std::size_t rows) {
  std::size_t step = 1;
  while ((columns / step) * (rows / step) > maximumBlocks) step += 2;
  return step;
}

}  // namespace

double chromaEdgeShare(OpaqueRows& rows) {
  const std::size_t blockColumns = rows.width() / 2;
  const std::size_t blockRows = rows.height() / 2;
  const std::size_t step = gridStep(blockColumns, blockRows);
  std::size_t blocks = 0;
  std::size_t edges = 0;
  for (std::size_t y = 0; y < blockRows; y += step) {
    const auto pair = rows.read(y * 2, 2);
    for (std::size_t x = 0; x < blockColumns; x += step) {
      ++blocks;
      edges += holdsEdge(pair[0] + x * 8, pair[1] + x * 8) ? 1 : 0;
    }
  }
  return blocks == 0 ? 0 : static_cast<double>(edges) / static_cast<double>(blocks);
}

}  // namespace orvane
