#include "platform/graphics/Orient.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "platform/graphics/RowRenderer.h"

namespace orvane {
namespace {

/// Rows that are turned together. A quarter turn then writes runs of this many pixels.
constexpr std::size_t rowsPerBlock = 16;

/// The places of the stored pixels in the upright picture, in pixels from its first one.
struct Placement {
  std::ptrdiff_t origin;      ///< of the stored upper left pixel
  std::ptrdiff_t columnStep;  ///< from a pixel to the next of its stored row
  std::ptrdiff_t rowStep;     ///< from a pixel to the one stored below
};

bool swapsSides(int orientation) { return orientation >= 5; }

/// CIPA DC-008 defines an orientation by the sides of the upright picture where the first stored
/// row and column lie.
Placement placement(int orientation, const Image& upright) {
  const auto width = static_cast<std::ptrdiff_t>(upright.width);
  const auto height = static_cast<std::ptrdiff_t>(upright.height);
  const bool startsRight = orientation % 4 >= 2;        // 2, 3, 6, 7
  const bool startsBelow = (orientation - 1) % 4 >= 2;  // 3, 4, 7, 8
  const std::ptrdiff_t origin =
      (startsRight ? width - 1 : 0) + (startsBelow ? (height - 1) * width : 0);
  const std::ptrdiff_t across = startsRight ? -1 : 1;
  const std::ptrdiff_t down = startsBelow ? -width : width;
  if (swapsSides(orientation)) return {origin, down, across};
  return {origin, across, down};
}

/// Copies a block of stored rows into the upright picture, its first pixel to `to`.
template <std::size_t pixelSize>
void place(const std::uint8_t* block, std::size_t width, std::size_t rows,
           const Placement& placement, std::uint8_t* to) {
  constexpr auto step = static_cast<std::ptrdiff_t>(pixelSize);
  for (std::size_t x = 0; x < width; ++x, to += placement.columnStep * step) {
    for (std::size_t y = 0; y < rows; ++y) {
      std::memcpy(to + static_cast<std::ptrdiff_t>(y) * placement.rowStep * step,
                  block + (y * width + x) * pixelSize, pixelSize);
    }
  }
}

/// The upright picture of `image`, still without pixels.
Image makeUpright(const Image& image, int orientation) {
  return {.width = swapsSides(orientation) ? image.height : image.width,
          .height = swapsSides(orientation) ? image.width : image.height,
          .bitsPerComponent = image.bitsPerComponent,
          .layout = ChannelLayout::rgba,
          .alpha = image.alpha == AlphaKind::none ? AlphaKind::none : AlphaKind::premultiplied,
          .colorSpace = renderingSpace(image.colorSpace)};
}

}  // namespace

Image orient(const Image& image, int orientation) {
  Image upright = makeUpright(image, orientation);
  std::uint8_t* pixels = allocatePackedRows(upright);
  const std::size_t pixelSize = upright.bytesPerPixel();
  const Placement where = placement(orientation, upright);
  const auto destination = [&](std::size_t storedRow) {
    const std::ptrdiff_t pixel =
        where.origin + static_cast<std::ptrdiff_t>(storedRow) * where.rowStep;
    return pixels + static_cast<std::size_t>(pixel) * pixelSize;
  };
  RowRenderer renderer(image, upright.colorSpace, upright.bitsPerComponent,
                       RowRenderer::AlphaForm::premultiplied);
  if (where.columnStep == 1) {
    for (std::size_t y = 0; y < image.height; ++y) renderer.render(y, destination(y));
    return upright;
  }
  const auto placeBlock = upright.bitsPerComponent == 8 ? place<4> : place<8>;
  const std::size_t rowBytes = image.width * pixelSize;
  std::vector<std::uint8_t> block(rowBytes * rowsPerBlock);
  for (std::size_t first = 0; first < image.height; first += rowsPerBlock) {
    const std::size_t rows = std::min(rowsPerBlock, image.height - first);
    for (std::size_t y = 0; y < rows; ++y) renderer.render(first + y, block.data() + y * rowBytes);
    placeBlock(block.data(), image.width, rows, where, destination(first));
  }
  return upright;
}

}  // namespace orvane
