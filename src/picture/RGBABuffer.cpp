#include "picture/RGBABuffer.h"

#include <algorithm>
#include <array>
#include <new>
#include <vector>

#include "picture/ImageProcessingError.h"
#include "platform/graphics/RowRenderer.h"

namespace orvane {
namespace {

/// Above this many pixels the 16-bit rendering would take too much memory (8 bytes a pixel).
constexpr std::size_t maximumDitheredPixels = 40'000'000;

/// The classic 8×8 Bayer index matrix times 4: thresholds 0…252 for one step of 8 bits in 16.
constexpr std::array<std::int32_t, 64> makeBayer8() {
  std::array<std::int32_t, 64> matrix{0,  32, 8,  40, 2,  34, 10, 42,  //
                                      48, 16, 56, 24, 50, 18, 58, 26,  //
                                      12, 44, 4,  36, 14, 46, 6,  38,  //
                                      60, 28, 52, 20, 62, 30, 54, 22,  //
                                      3,  35, 11, 43, 1,  33, 9,  41,  //
                                      51, 19, 59, 27, 49, 17, 57, 25,  //
                                      15, 47, 7,  39, 13, 45, 5,  37,  //
                                      63, 31, 55, 23, 61, 29, 53, 21};
  for (std::int32_t& entry : matrix) entry *= 4;
  return matrix;
}
constexpr std::array<std::int32_t, 64> bayer8 = makeBayer8();

/// Premultiplied to straight, in place. Returns whether any pixel is not opaque. The factor is a
/// rounded double: the quotient of integers, which RowRenderer takes, rounds some values the other
/// way, and outputs must not change.
bool unpremultiply(std::span<std::uint8_t> pixels) {
  bool hasAlpha = false;
  for (std::size_t at = 0; at < pixels.size(); at += 4) {
    const std::uint8_t alpha = pixels[at + 3];
    if (alpha == 255) continue;
    hasAlpha = true;
    const double factor = alpha == 0 ? 0 : 255.0 / alpha;
    for (std::size_t c = 0; c < 3; ++c) {
      // The product is not negative: adding a half and truncating rounds halves away from zero.
      const auto straight = static_cast<int>(factor * pixels[at + c] + 0.5);
      pixels[at + c] = static_cast<std::uint8_t>(std::min(straight, 255));
    }
  }
  return hasAlpha;
}

/// Dithers one row of 16-bit values to 8 bits by the thresholds of row `y` of the matrix.
void dither(std::span<const std::uint16_t> row, std::size_t y, std::uint8_t* out) {
  const std::int32_t* thresholds = &bayer8[y % 8 * 8];
  for (std::size_t at = 0; at < row.size(); ++at) {
    const std::int32_t value = row[at] + thresholds[at / 4 % 8];
    out[at] = static_cast<std::uint8_t>(std::min(value, 65535) >> 8);
  }
}

/// Renders `image`, at 16 bits if it is to be dithered. Returns whether any pixel is not opaque.
bool render(const Image& image, const ColorSpacePtr& space, bool dithers, std::uint8_t* pixels) {
  RowRenderer renderer(image, space, dithers ? 16 : 8, RowRenderer::AlphaForm::premultiplied);
  const std::size_t rowSize = image.width * 4;
  std::vector<std::uint16_t> deepRow(dithers ? rowSize : 0);
  bool hasAlpha = false;
  for (std::size_t y = 0; y < image.height; ++y, pixels += rowSize) {
    renderer.render(y, dithers ? static_cast<void*>(deepRow.data()) : pixels);
    if (dithers) dither(deepRow, y, pixels);
    hasAlpha |= unpremultiply({pixels, rowSize});
  }
  return hasAlpha;
}

}  // namespace

RGBABuffer::RGBABuffer(const Image& image) try
    : width(image.width), height(image.height), colorSpace(renderingSpace(image.colorSpace)) {
  const std::size_t size = width * 4 * height;
  if (isOpaqueRendering(image)) {
    storage = image.pixels;
  } else {
    const MutablePixelMemory rendered = makePixelMemory(size);
    const bool dithers = image.bitsPerComponent > 8 && width * height <= maximumDitheredPixels;
    hasAlpha = render(image, colorSpace, dithers, rendered.get());
    storage = rendered;
  }
  pixels = {storage.get(), size};
} catch (const std::bad_alloc&) {
  throw ImageProcessingError::contextCreationFailed();
}

RGBABuffer::RGBABuffer(std::size_t bufferWidth, std::size_t bufferHeight,
                       PixelMemory straightPixels, ColorSpacePtr space)
    : width(bufferWidth),
      height(bufferHeight),
      storage(std::move(straightPixels)),
      pixels(storage.get(), bufferWidth * 4 * bufferHeight),
      colorSpace(std::move(space)) {
  for (std::size_t alpha = 3; alpha < pixels.size(); alpha += 4) hasAlpha |= pixels[alpha] != 255;
}

}  // namespace orvane
