#pragma once

#include "codecs/PictureMeasurements.h"
#include "picture/RGBABuffer.h"
#include "pipeline/ImageAnalyzer.h"
#include "support/TestImages.h"

namespace orvane::test {

/// A buffer over the memory of an 8-bit rgba picture with packed rows, as it is.
inline RGBABuffer bufferOf(const Image& image) {
  return RGBABuffer(image.width, image.height, image.pixels, image.colorSpace);
}

/// A straight-alpha buffer drawn by `pixelAt(x, y)`.
inline RGBABuffer drawBuffer(std::size_t width, std::size_t height, const ColorSpacePtr& space,
                             const std::function<Pixel(std::size_t x, std::size_t y)>& pixelAt) {
  return bufferOf(
      drawImage(width, height, ChannelLayout::rgba, AlphaKind::straight, 8, space, pixelAt));
}

/// All that encoders are told of a picture.
inline PictureMeasurements measured(const Image& image) {
  return measure(image, ImageAnalyzer::analyze(RGBABuffer(image)));
}

}  // namespace orvane::test
