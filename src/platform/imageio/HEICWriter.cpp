#include "platform/imageio/ImageDestination.h"

namespace orvane {

const ImageDestination heicDestination{"public.heic", [](const Image&, double) -> Bytes {
                                         throw UnwritableImage("not writable yet");
                                       }};

}  // namespace orvane
