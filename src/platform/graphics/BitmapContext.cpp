#include "platform/graphics/BitmapContext.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <vector>

#include "platform/graphics/RowRenderer.h"

namespace orvane {
namespace {

/// Rows that are turned together, so that a quarter turn writes runs of pixels and not single ones.
constexpr std::size_t rowsPerBlock = 16;

/// Where the picture's pixels go on the canvas, in pixels from its first one.
struct Placement {
  std::ptrdiff_t origin;      ///< of the picture's upper left pixel
  std::ptrdiff_t columnStep;  ///< from a pixel to the next of its row
  std::ptrdiff_t rowStep;     ///< from a pixel to the one below
};

Placement placement(const AffineTransform& transform, const Image& image, const Image& canvas) {
  const auto canvasWidth = static_cast<std::ptrdiff_t>(canvas.width);
  const auto canvasHeight = static_cast<std::ptrdiff_t>(canvas.height);
  // Centre of the upper left pixel, in half pixels, y upwards.
  const std::ptrdiff_t x = 1;
  const auto y = 2 * static_cast<std::ptrdiff_t>(image.height) - 1;
  const std::ptrdiff_t column = (transform.a * x + transform.c * y + 2 * transform.tx - 1) / 2;
  const std::ptrdiff_t up = (transform.b * x + transform.d * y + 2 * transform.ty - 1) / 2;
  return {(canvasHeight - 1 - up) * canvasWidth + column, transform.a - transform.b * canvasWidth,
          transform.d * canvasWidth - transform.c};
}

/// What is under the picture shows where the picture is not opaque; the result is opaque. Colours
/// past their alpha, which lossy files hold, count as white.
template <typename Component>
void flatten(Component* row, std::size_t width, bool onWhite) {
  constexpr int opaque = static_cast<Component>(~Component{0});
  for (std::size_t x = 0; x < width; ++x, row += 4) {
    const int light = onWhite ? opaque - row[3] : 0;
    for (int c = 0; c < 3; ++c) row[c] = static_cast<Component>(std::min(row[c] + light, opaque));
    row[3] = static_cast<Component>(opaque);
  }
}

/// One R, G, B, A pixel of 8 or 16 bits.
template <std::size_t size>
struct PixelBytes {
  std::byte bytes[size];
};

template <typename Pixel>
void place(const void* block, std::size_t width, std::size_t rows, const Placement& placement,
           std::size_t firstRow, void* canvas) {
  const auto* from = static_cast<const Pixel*>(block);
  auto* to = static_cast<Pixel*>(canvas) + placement.origin +
             static_cast<std::ptrdiff_t>(firstRow) * placement.rowStep;
  for (std::size_t x = 0; x < width; ++x, to += placement.columnStep) {
    for (std::size_t y = 0; y < rows; ++y) {
      to[static_cast<std::ptrdiff_t>(y) * placement.rowStep] = from[y * width + x];
    }
  }
}

}  // namespace

std::optional<BitmapContext> BitmapContext::create(std::size_t width, std::size_t height,
                                                   int bitsPerComponent, Alpha alpha,
                                                   ColorSpacePtr colorSpace) try {
  if (!colorSpace->supportsOutput()) return std::nullopt;
  BitmapContext context;
  context.canvas_ = {
      .width = width,
      .height = height,
      .bitsPerComponent = bitsPerComponent,
      .layout = ChannelLayout::rgba,
      .alpha = alpha == Alpha::noneSkipLast ? AlphaKind::none : AlphaKind::premultiplied,
      .colorSpace = std::move(colorSpace)};
  context.pixels_ = allocatePackedRows(context.canvas_);
  return context;
} catch (const std::bad_alloc&) {
  return std::nullopt;
}

void BitmapContext::draw(const Image& image) {
  RowRenderer renderer(image, canvas_.colorSpace, canvas_.bitsPerComponent,
                       RowRenderer::AlphaForm::premultiplied);
  const bool seesThrough = image.alpha != AlphaKind::none &&
                           (canvas_.alpha == AlphaKind::none || background_ == Background::white);
  const auto renderRow = [&](std::size_t y, std::uint8_t* row) {
    renderer.render(y, row);
    if (!seesThrough) return;
    const bool onWhite = background_ == Background::white;
    if (canvas_.bitsPerComponent == 8) {
      flatten(row, image.width, onWhite);
    } else {
      flatten(reinterpret_cast<std::uint16_t*>(row), image.width, onWhite);
    }
  };

  const Placement where = placement(transform_, image, canvas_);
  const auto pixelSize = static_cast<std::ptrdiff_t>(canvas_.bytesPerPixel());
  if (where.columnStep == 1) {
    for (std::size_t y = 0; y < image.height; ++y) {
      renderRow(
          y, pixels_ + (where.origin + static_cast<std::ptrdiff_t>(y) * where.rowStep) * pixelSize);
    }
    return;
  }
  const std::size_t rowBytes = image.width * canvas_.bytesPerPixel();
  std::vector<std::uint8_t> block(rowBytes * rowsPerBlock);
  for (std::size_t first = 0; first < image.height; first += rowsPerBlock) {
    const std::size_t rows = std::min(rowsPerBlock, image.height - first);
    for (std::size_t y = 0; y < rows; ++y) renderRow(first + y, block.data() + y * rowBytes);
    const auto placeBlock =
        canvas_.bitsPerComponent == 8 ? place<PixelBytes<4>> : place<PixelBytes<8>>;
    placeBlock(block.data(), image.width, rows, where, first, pixels_);
  }
}

Image BitmapContext::makeImage() && { return std::move(canvas_); }

}  // namespace orvane
