#include "codecs/ImageDestination.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "codecs/ImageSource.h"
#include "support/TestBuffers.h"
#include "support/TestImages.h"

namespace orvane {
namespace {

class ImageDestinations : public testing::TestWithParam<ImageFormat> {};

bool haveEqualPixels(ByteView file, ByteView other) {
  const RGBABuffer pixels(ImageSource::create(file)->image());
  const RGBABuffer otherPixels(ImageSource::create(other)->image());
  return std::ranges::equal(pixels.pixels, otherPixels.pixels);
}

TEST_P(ImageDestinations, codesSamplesWithThePixelsOfItsFiles) {
  const ImageDestination& destination = *ImageDestination::of(GetParam());
  const Image gray = test::drawImage(70, 50, ChannelLayout::rgba, AlphaKind::none, 8,
                                     ColorSpace::sRGB(), [](std::size_t x, std::size_t y) {
                                       const auto level = static_cast<std::uint16_t>(x * y % 256);
                                       return test::Pixel{level, level, level, 255};
                                     });
  for (const Image& image : {gray, test::gradientImage(150, 90), test::noisyImage(150, 90),
                             test::patchImage(64, 64, ColorSpace::sRGB())}) {
    const PictureMeasurements measurements = test::measured(image);
    for (const double quality : {0.3, 0.75, 0.95}) {
      EXPECT_TRUE(haveEqualPixels(destination.encode(image, measurements, quality, 1),
                                  destination.encodeSample(image, measurements, quality)))
          << quality;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(ImageDestination, ImageDestinations,
                         testing::Values(ImageFormat::jpeg, ImageFormat::heic, ImageFormat::avif),
                         [](const auto& tested) {
                           return std::string(tested.param.fileExtension());
                         });

}  // namespace
}  // namespace orvane
