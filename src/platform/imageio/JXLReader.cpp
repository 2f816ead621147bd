#include "platform/imageio/ImageReader.h"

namespace orvane {

const ImageReader jxlReader{
    [](ByteView) { return false; },
    [](ByteView) -> std::unique_ptr<ImageSource> { throw UnreadableImage("not readable yet"); }};

}  // namespace orvane
