// A picture that can be decoded is encoded in all six formats, and each output can be decoded to a
// picture of the same size. Only JPEG XL may fail: libjxl refuses some colour profiles that Little
// CMS takes.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>

#include "picture/ImageProcessingError.h"
#include "pipeline/Compression.h"
#include "pipeline/ImageDecoder.h"

namespace {

using orvane::Bytes;
using orvane::ByteView;
using orvane::ImageDecoder::DecodedImage;

/// All encoders together take about 0.1 s for this many.
constexpr std::size_t mostPixels = std::size_t{64} * 64;

/// From here on JPEG files are also repacked as JPEG XL.
constexpr double quality = 90;

/// Absent for files that are refused or too large.
std::optional<DecodedImage> decoded(ByteView file) try {
  const auto source = orvane::ImageDecoder::open(file);
  if (source->width() * source->height() > mostPixels) return std::nullopt;
  return orvane::ImageDecoder::decode(*source);
} catch (const orvane::ImageProcessingError&) {
  return std::nullopt;
}

/// Absent where the encoder refuses the picture.
std::optional<Bytes> encoded(ByteView file, orvane::ImageFormat format) {
  orvane::Compression compression(file, format, quality);
  compression.decode();
  try {
    return compression.encode();
  } catch (const orvane::ImageProcessingError&) {
    return std::nullopt;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const ByteView file(data, size);
  const auto picture = decoded(file);
  if (!picture) return 0;
  for (const orvane::ImageFormat format : orvane::ImageFormat::allCases) {
    const auto output = encoded(file, format);
    if (!output && format == orvane::ImageFormat::jxl) continue;
    const DecodedImage again = orvane::ImageDecoder::decodeImageSource(output.value());
    const bool isSame = again.format == format && again.image.width == picture->image.width &&
                        again.image.height == picture->image.height;
    if (!isSame) std::abort();
  }
  return 0;
}
