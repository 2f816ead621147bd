#include "codecs/ScreenContent.h"

#include <algorithm>
#include <cstdlib>

namespace orvane {
namespace {

/// Screenshots repeat 0.84 of their pixels and more, photographs up to 0.5, drawings up to all.
constexpr double leastRepeated = 0.8;

/// Of the pixels that differ from the one to their left, 0.11 and more jump in screenshots, and up
/// to 0.07 in drawings that repeat as many; none in flat pictures.
constexpr double leastJumping = 0.1;

/// In one channel, of 255.
constexpr int jump = 48;

constexpr std::size_t maximumPixels = std::size_t{1} << 20;

struct Counts {
  std::size_t pixels = 0;
  std::size_t repeated = 0;
  std::size_t jumping = 0;
};

void countRow(const std::uint8_t* row, std::size_t width, Counts& counts) {
  for (std::size_t x = 1; x < width; ++x, row += 4) {
    int difference = 0;
    for (std::size_t c = 0; c < 3; ++c) {
      difference = std::max(difference, std::abs(row[c] - row[c + 4]));
    }
    counts.repeated += difference == 0;
    counts.jumping += difference > jump;
  }
  counts.pixels += width - 1;
}

/// Odd, so that it seldom falls in step with lines of text.
std::size_t rowStep(std::size_t width, std::size_t height) {
  return width * height / maximumPixels | 1;
}

}  // namespace

bool suitsScreenContentTools(OpaqueRows& rows) {
  if (rows.width() < 2) return false;
  Counts counts;
  const std::size_t step = rowStep(rows.width(), rows.height());
  for (std::size_t y = 0; y < rows.height(); y += step) {
    countRow(rows.read(y, 1)[0], rows.width(), counts);
  }
  const auto changing = static_cast<double>(counts.pixels - counts.repeated);
  return static_cast<double>(counts.repeated) >=
             leastRepeated * static_cast<double>(counts.pixels) &&
         static_cast<double>(counts.jumping) > leastJumping * changing;
}

}  // namespace orvane
