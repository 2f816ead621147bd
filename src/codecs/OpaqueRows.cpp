#include "codecs/OpaqueRows.h"

#include <algorithm>

namespace orvane {

OpaqueRows::OpaqueRows(const Image& image)
    : image_(image), colorSpace_(renderingSpace(image.colorSpace)) {
  if (isOpaqueRendering(image)) return;
  renderer_.emplace(image, colorSpace_, 8, RowRenderer::AlphaForm::premultiplied);
  rendered_.resize(image.width * 4 * maximumCount);
}

std::span<const std::uint8_t* const> OpaqueRows::read(std::size_t first, std::size_t count) {
  count = std::min({count, maximumCount, image_.height - first});
  for (std::size_t i = 0; i < count; ++i) {
    if (renderer_) {
      std::uint8_t* row = rendered_.data() + i * image_.width * 4;
      renderer_->render(first + i, row);
      rows_[i] = row;
    } else {
      rows_[i] = image_.row(first + i);
    }
  }
  return std::span(rows_).first(count);
}

}  // namespace orvane
