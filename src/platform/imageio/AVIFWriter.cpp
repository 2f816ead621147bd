#include "platform/imageio/ImageDestination.h"

namespace orvane {

const ImageDestination avifDestination{"public.avif", [](const Image&, double) -> Bytes {
                                         throw UnwritableImage("not writable yet");
                                       }};

}  // namespace orvane
