#include "codecs/ImageSource.h"

#include <algorithm>
#include <array>

#include "codecs/ImageLimits.h"

namespace orvane {
namespace {

constexpr std::array readers{&pngReader,  &jpegReader, &webpReader,
                             &heicReader, &avifReader, &jxlReader};

}  // namespace

std::unique_ptr<ImageSource> ImageSource::create(ByteView file) {
  const auto reader = std::ranges::find_if(
      readers, [&](const ImageReader* candidate) { return candidate->recognises(file); });
  if (reader == readers.end()) throw UnreadableImage("no known signature");
  return (*reader)->open(file);
}

void ImageSource::setSize(std::uint64_t width, std::uint64_t height, std::size_t bytesPerPixel) {
  ImageLimits::check(width, height, bytesPerPixel);
  width_ = width;
  height_ = height;
  bytesPerPixel_ = bytesPerPixel;
}

}  // namespace orvane
