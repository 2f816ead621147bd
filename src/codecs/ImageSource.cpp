#include "codecs/ImageSource.h"

#include <algorithm>
#include <array>

#include "codecs/ImageReader.h"

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

}  // namespace orvane
