#include "workers/JobCost.h"

#include <algorithm>

namespace orvane::JobCost {
namespace {

/// The cost of one pixel. The bytes were measured as peaks of whole processes less 15 MB, on
/// pictures of 12 and 24 megapixels from JPEG and from PNG of 8 and 16 bits, and rounded up by a
/// tenth; for PNG, HEIC and JPEG XL they cover the memory that the encoders ask for in advance.
struct PixelCost {
  std::uint64_t opaqueBytes;
  std::uint64_t alphaBytes;
  double microseconds;
};

PixelCost costOf(ImageFormat format) {
  switch (format) {
    case ImageFormat::png:
      return {28, 28, 10};
    case ImageFormat::jpeg:
      return {14, 17, 1};
    case ImageFormat::heic:
      return {36, 36, 13};
    case ImageFormat::avif:
      return {44, 40, 10};
    case ImageFormat::webp:
      return {14, 46, 10};
    case ImageFormat::jxl:
      return {60, 70, 10};
  }
  return {};
}

std::uint64_t pixelsOf(const ImageSource& source) {
  return std::uint64_t{source.width()} * source.height();
}

/// Tables that stop growing: libimagequant's histogram.
std::uint64_t encoderMemory(ImageFormat format, std::uint64_t pixels) {
  switch (format) {
    case ImageFormat::png:
      return std::min(pixels * 72, std::uint64_t{128} << 20);
    case ImageFormat::jpeg:
    case ImageFormat::heic:
    case ImageFormat::avif:
    case ImageFormat::webp:
    case ImageFormat::jxl:
      return 0;
  }
  return 0;
}

/// The picture, as it is stored and turned or rendered, and the decoder's own copies.
std::uint64_t decodingBytesPerPixel(const ImageSource& source) {
  constexpr std::uint64_t ofJPEGXL = 70;
  const std::uint64_t ofOthers = 3 * source.bytesPerPixel() + 4;
  const auto format = ImageFormat::fromTypeIdentifier(source.typeIdentifier());
  if (!format) return ofOthers;
  switch (*format) {
    case ImageFormat::jxl:
      return ofJPEGXL;
    case ImageFormat::png:
    case ImageFormat::jpeg:
    case ImageFormat::heic:
    case ImageFormat::avif:
    case ImageFormat::webp:
      return ofOthers;
  }
  return ofOthers;
}

}  // namespace

std::uint64_t decodingMemory(const ImageSource& source) {
  return baseMemory + pixelsOf(source) * decodingBytesPerPixel(source);
}

std::uint64_t encodingMemory(const ImageSource& source, ImageFormat format, bool hasAlpha) {
  const PixelCost cost = costOf(format);
  return baseMemory + encoderMemory(format, pixelsOf(source)) +
         pixelsOf(source) * (hasAlpha ? cost.alphaBytes : cost.opaqueBytes);
}

std::uint64_t seconds(const ImageSource& source, ImageFormat format) {
  constexpr double least = 30;
  constexpr double decoding = 3;
  const double perMegapixel = decoding + costOf(format).microseconds;
  return static_cast<std::uint64_t>(least +
                                    perMegapixel * static_cast<double>(pixelsOf(source)) / 1e6);
}

}  // namespace orvane::JobCost
