#pragma once

#include "codecs/ImageDestination.h"
#include "codecs/png/PNGQuantEncoder.h"
#include "support/TestBuffers.h"

namespace orvane::test {

/// A truecolour PNG file of a picture.
inline Bytes pngFile(const Image& image) {
  return PNGQuantEncoder::encodeLossless(RGBABuffer(image), {.mode = EncodingPlan::Lossless{}});
}

/// A JPEG file of an opaque picture; `quality` is 0…1.
inline Bytes jpegFile(const Image& image, double quality = 0.9) {
  return ImageDestination::of(ImageFormat::jpeg)->encode(image, measured(image), quality, 1);
}

}  // namespace orvane::test
