#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/graphics/Image.h"

namespace orvane {

/// The pixel form of the analysis and of the tool's own encoders: 8-bit R, G, B, A, straight alpha,
/// rows from the top, stride width × 4 without padding. Immutable once built; copies share their
/// pixels.
struct RGBABuffer {
  std::size_t width = 0;
  std::size_t height = 0;
  PixelMemory storage;                   ///< keeps `pixels` alive
  std::span<const std::uint8_t> pixels;  ///< width × height × 4 bytes; alpha 0 means 0, 0, 0, 0
  bool hasAlpha = false;                 ///< at least one alpha is not 255
  ColorSpacePtr colorSpace;              ///< RGB, can be rendered into

  /// Renders `image`: at 16 bits with ordered dither when it has more than 8 bits per component
  /// and at most 40 000 000 pixels, straight to 8 bits otherwise. Shares the memory of an opaque
  /// 8-bit picture that is already in this form.
  /// Throws ImageProcessingError::contextCreationFailed.
  explicit RGBABuffer(const Image& image);

  /// Takes width × height × 4 bytes as they are, straight alpha; `hasAlpha` is found in them.
  RGBABuffer(std::size_t width, std::size_t height, PixelMemory straightPixels,
             ColorSpacePtr colorSpace);

  /// Frees the pixels and keeps the rest.
  void releasePixels() {
    pixels = {};
    storage.reset();
  }
};

}  // namespace orvane
