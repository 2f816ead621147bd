#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/graphics/ColorSpace.h"

namespace orvane {

/// Pixel memory that several owners may hold, aligned for 16-bit values.
using PixelMemory = std::shared_ptr<const std::uint8_t[]>;
using MutablePixelMemory = std::shared_ptr<std::uint8_t[]>;

/// Memory for pixels, not zeroed. Throws std::bad_alloc.
inline MutablePixelMemory makePixelMemory(std::size_t bytes) {
  return std::make_shared_for_overwrite<std::uint8_t[]>(bytes);
}

enum class ChannelLayout : std::uint8_t {
  gray,
  grayAlpha,
  rgb,   ///< R, G, B
  rgba,  ///< R, G, B, A; without alpha (AlphaKind::none) the fourth value is filler, all bits set
  cmyk,  ///< C, M, Y, K; 0 is no ink
};

constexpr std::size_t channelCount(ChannelLayout layout) {
  switch (layout) {
    case ChannelLayout::gray:
      return 1;
    case ChannelLayout::grayAlpha:
      return 2;
    case ChannelLayout::rgb:
      return 3;
    case ChannelLayout::rgba:
    case ChannelLayout::cmyk:
      return 4;
  }
  return 0;
}

enum class AlphaKind : std::uint8_t { none, straight, premultiplied };

/// A decoded picture: `height` rows from the top, each `bytesPerRow` apart, interleaved channels,
/// full range, 8-bit or 16-bit (native byte order) components. Immutable; copies share their
/// pixels.
struct Image {
  std::size_t width = 0;
  std::size_t height = 0;
  int bitsPerComponent = 8;  ///< 8 or 16
  ChannelLayout layout = ChannelLayout::rgba;
  AlphaKind alpha = AlphaKind::none;
  ColorSpacePtr colorSpace;  ///< never null; its model is the layout's
  std::size_t bytesPerRow = 0;
  PixelMemory pixels;

  const std::uint8_t* row(std::size_t y) const { return pixels.get() + y * bytesPerRow; }

  std::size_t bytesPerPixel() const {
    return channelCount(layout) * static_cast<std::size_t>(bitsPerComponent / 8);
  }
};

/// Allocates packed rows for `image`, whose size and format are set, and returns them for writing.
/// They are not zeroed. Throws std::bad_alloc.
inline std::uint8_t* allocatePackedRows(Image& image) {
  image.bytesPerRow = image.width * image.bytesPerPixel();
  const MutablePixelMemory pixels = makePixelMemory(image.bytesPerRow * image.height);
  image.pixels = pixels;
  return pixels.get();
}

/// Whether the bytes of `image` are those of its opaque 8-bit rendering into its own space: packed
/// R, G, B, 255.
inline bool isOpaqueRendering(const Image& image) {
  return image.bitsPerComponent == 8 && image.layout == ChannelLayout::rgba &&
         image.alpha == AlphaKind::none && image.bytesPerRow == image.width * 4 &&
         image.colorSpace->supportsOutput();
}

}  // namespace orvane
