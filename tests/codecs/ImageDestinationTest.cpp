#include "codecs/ImageDestination.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "codecs/ImageSource.h"
#include "support/TestBuffers.h"
#include "support/TestImages.h"

namespace orvane {
namespace {

bool haveEqualPixels(ByteView file, ByteView other) {
  const RGBABuffer pixels(ImageSource::create(file)->image());
  const RGBABuffer otherPixels(ImageSource::create(other)->image());
  return std::ranges::equal(pixels.pixels, otherPixels.pixels);
}

void expectSamplesOfEqualPixels(const ImageDestination& destination, const Image& image) {
  const PictureMeasurements measurements = test::measured(image);
  for (const double quality : {0.3, 0.75, 0.95}) {
    EXPECT_TRUE(haveEqualPixels(destination.encode(image, measurements, quality, 1),
                                destination.encodeSample(image, measurements, quality)))
        << quality;
  }
}

TEST(ImageDestination, codesSamplesWithThePixelsOfItsFiles) {
  const Image gray = test::drawImage(70, 50, ChannelLayout::rgba, AlphaKind::none, 8,
                                     ColorSpace::sRGB(), [](std::size_t x, std::size_t y) {
                                       const auto level = static_cast<std::uint16_t>(x * y % 256);
                                       return test::Pixel{level, level, level, 255};
                                     });
  for (const ImageFormat format : {ImageFormat::jpeg, ImageFormat::heic, ImageFormat::avif}) {
    SCOPED_TRACE(format.rawValue());
    for (const Image& image : {gray, test::gradientImage(150, 90), test::noisyImage(150, 90),
                               test::patchImage(64, 64, ColorSpace::sRGB())}) {
      expectSamplesOfEqualPixels(*ImageDestination::of(format), image);
    }
  }
}

}  // namespace
}  // namespace orvane
