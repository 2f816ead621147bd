#include "platform/imageio/ImageDestination.h"

namespace orvane {

const ImageDestination jpegDestination{"public.jpeg", [](const Image&, double) -> Bytes {
                                         throw UnwritableImage("not writable yet");
                                       }};

}  // namespace orvane
