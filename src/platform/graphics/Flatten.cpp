#include "platform/graphics/Flatten.h"

#include <algorithm>
#include <span>

#include "platform/graphics/RowRenderer.h"

namespace orvane {
namespace {

/// Draws premultiplied R, G, B, A over `backdrop`. Lossy files hold colours greater than their
/// alpha; these count as white.
void compose(std::span<std::uint8_t> row, Backdrop backdrop) {
  for (std::size_t at = 0; at < row.size(); at += 4) {
    const int light = backdrop == Backdrop::white ? 255 - row[at + 3] : 0;
    for (std::size_t c = at; c < at + 3; ++c) {
      row[c] = static_cast<std::uint8_t>(std::min(row[c] + light, 255));
    }
    row[at + 3] = 255;
  }
}

}  // namespace

Image flatten(const Image& image, Backdrop backdrop) {
  if (isOpaqueRendering(image)) return image;
  Image flat{
      .width = image.width, .height = image.height, .colorSpace = renderingSpace(image.colorSpace)};
  std::uint8_t* row = allocatePackedRows(flat);
  RowRenderer renderer(image, flat.colorSpace, flat.bitsPerComponent,
                       RowRenderer::AlphaForm::premultiplied);
  for (std::size_t y = 0; y < flat.height; ++y, row += flat.bytesPerRow) {
    renderer.render(y, row);
    if (image.alpha != AlphaKind::none) compose({row, flat.bytesPerRow}, backdrop);
  }
  return flat;
}

}  // namespace orvane
