#include "workers/JobCost.h"

#include <algorithm>

namespace orvane::JobCost {
namespace {

/// The cost of a format. The bytes were measured as peaks of whole processes less 15 MB, on
/// pictures of 12 and 24 megapixels from JPEG and from PNG of 8 and 16 bits, and rounded up by a
/// tenth; for PNG, HEIC and JPEG XL they cover the memory that the encoders ask for in advance, for
/// JPEG those files that are largest: noise at quality 100.
struct Cost {
  std::uint64_t opaqueBytes;  ///< of a pixel while it is encoded
  std::uint64_t alphaBytes;   ///< the same with an alpha channel
  double microseconds;        ///< of a pixel
};

Cost costOf(ImageFormat format) {
  switch (format) {
    case ImageFormat::png:
      return {28, 28, 10};
    case ImageFormat::jpeg:
      return {14, 18, 1};
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

/// Bytes that a thread of an encoder takes: its stack, and what the encoder keeps for it.
constexpr std::uint64_t threadMemory = std::uint64_t{16} << 20;

std::uint64_t pixelsOf(const ImageSource& source) {
  return std::uint64_t{source.width()} * source.height();
}

bool isOf(const ImageSource& source, ImageFormat format) {
  return source.typeIdentifier() == format.typeIdentifier();
}

/// The picture, as it is stored and turned or rendered, and the decoder's own copies.
std::uint64_t decodingMemory(const ImageSource& source) {
  constexpr std::uint64_t ofJPEGXL = 70;
  const std::uint64_t ofOthers = 3 * source.bytesPerPixel() + 4;
  return pixelsOf(source) * (isOf(source, ImageFormat::jxl) ? ofJPEGXL : ofOthers);
}

/// The picture and the encoder. Only JPEG has no alpha channel.
std::uint64_t encodingMemory(const ImageSource& source, ImageFormat format) {
  const std::uint64_t pixels = pixelsOf(source);
  const Cost cost = costOf(format);
  const std::uint64_t histogram =  // libimagequant's, which stops growing
      format == ImageFormat::png ? std::min(pixels * 72, std::uint64_t{128} << 20) : 0;
  return histogram + pixels * (isOf(source, ImageFormat::jpeg)
                                   ? cost.opaqueBytes
                                   : std::max(cost.opaqueBytes, cost.alphaBytes));
}

}  // namespace

std::uint64_t memory(const ImageSource& source, ImageFormat format, int threads) {
  return baseMemory + static_cast<std::uint64_t>(threads - 1) * threadMemory +
         std::max(decodingMemory(source), encodingMemory(source, format));
}

std::uint64_t seconds(const ImageSource& source, ImageFormat format) {
  constexpr double decoding = 3;  // microseconds of a pixel
  const double microseconds =
      (decoding + costOf(format).microseconds) * static_cast<double>(pixelsOf(source));
  return smallSeconds + static_cast<std::uint64_t>(microseconds / 1e6);
}

}  // namespace orvane::JobCost
