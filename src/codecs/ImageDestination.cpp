#include "codecs/ImageDestination.h"

namespace orvane {

const ImageDestination* ImageDestination::of(ImageFormat format) {
  switch (format) {
    case ImageFormat::jpeg:
      return &jpegDestination;
    case ImageFormat::heic:
      return &heicDestination;
    case ImageFormat::avif:
      return &avifDestination;
    case ImageFormat::png:
    case ImageFormat::webp:
    case ImageFormat::jxl:
      return nullptr;
  }
  return nullptr;
}

}  // namespace orvane
