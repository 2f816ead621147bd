#include "workers/JobCost.h"

namespace orvane::JobCost {
namespace {

/// What one pixel costs. The bytes are peaks of whole processes less 15 MB, measured on pictures of
/// 12 and 24 megapixels from JPEG and from PNG of 8 and 16 bits, rounded up by about a tenth.
struct PixelCost {
  std::uint64_t opaqueBytes;
  std::uint64_t alphaBytes;
  double microseconds;
};

PixelCost costOf(ImageFormat format) {
  switch (format) {
    case ImageFormat::png:
      return {12, 13, 10};
    case ImageFormat::jpeg:
      return {14, 17, 1};
    case ImageFormat::heic:
      return {26, 26, 13};
    case ImageFormat::avif:
      return {44, 40, 10};
    case ImageFormat::webp:
      return {14, 46, 10};
    case ImageFormat::jxl:
      return {50, 66, 10};
  }
  return {};
}

std::uint64_t pixelsOf(const ImageSource& source) {
  return std::uint64_t{source.width()} * source.height();
}

}  // namespace

std::uint64_t decodingMemory(const ImageSource& source) {
  // The picture, as it is stored and turned or rendered, and decoders' own copies.
  return baseMemory + pixelsOf(source) * (3 * source.bytesPerPixel() + 4);
}

std::uint64_t encodingMemory(const ImageSource& source, ImageFormat format, bool hasAlpha) {
  const PixelCost cost = costOf(format);
  return baseMemory + pixelsOf(source) * (hasAlpha ? cost.alphaBytes : cost.opaqueBytes);
}

std::uint64_t seconds(const ImageSource& source, ImageFormat format) {
  constexpr double least = 30;
  constexpr double decoding = 3;
  const double perMegapixel = decoding + costOf(format).microseconds;
  return static_cast<std::uint64_t>(least +
                                    perMegapixel * static_cast<double>(pixelsOf(source)) / 1e6);
}

}  // namespace orvane::JobCost
