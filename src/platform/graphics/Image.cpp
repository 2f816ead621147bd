#include "platform/graphics/Image.h"

namespace orvane {

bool isOpaqueRendering(const Image& image) {
  return image.bitsPerComponent == 8 && image.layout == ChannelLayout::rgba &&
         image.alpha == AlphaKind::none && image.bytesPerRow == image.width * 4 &&
         image.colorSpace->supportsOutput();
}

}  // namespace orvane
