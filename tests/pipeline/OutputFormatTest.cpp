#include "pipeline/OutputFormat.h"

#include <gtest/gtest.h>

#include "picture/ImageProcessingError.h"
#include "pipeline/ImageAnalyzer.h"
#include "support/TestImages.h"

namespace orvane {
namespace {

Picture pictureOf(const Image& image) {
  RGBABuffer buffer(image);
  const ImageCharacteristics characteristics = ImageAnalyzer::analyze(buffer);
  return {image, std::move(buffer), characteristics};
}

constexpr EncodingPlan lossy{.mode = EncodingPlan::Lossy{50}, .quality = 50};

Bytes encode(ImageFormat format, const Picture& picture) {
  return OutputFormat::of(format).encode(picture, lossy, PNGForm::truecolor);
}

TEST(OutputFormat, isOneRowForEachFormat) {
  for (const ImageFormat format : ImageFormat::allCases) {
    EXPECT_EQ(OutputFormat::of(format).format, format) << format.rawValue();
  }
}

TEST(OutputFormat, encodesEachFormatFromOneFormOfThePicture) {
  for (const ImageFormat format : ImageFormat::allCases) {
    Picture picture = pictureOf(test::noisyImage(40, 30));
    const Bytes whole = encode(format, picture);
    // Other memory, so that reading the released form would show.
    switch (OutputFormat::of(format).input) {
      case OutputFormat::Input::buffer:
        picture.image.pixels.reset();
        break;
      case OutputFormat::Input::image:
        picture.buffer.releasePixels();
        break;
    }
    EXPECT_EQ(encode(format, picture), whole) << format.rawValue();
  }
}

TEST(OutputFormat, refusesASideThatTheFormatCannotHold) {
  for (const ImageFormat format :
       {ImageFormat::jpeg, ImageFormat::heic, ImageFormat::avif, ImageFormat::webp}) {
    const std::size_t tooLong = OutputFormat::of(format).maximumSide + 1;
    for (const auto& [width, height] : {std::pair{tooLong, std::size_t{1}}, {1, tooLong}}) {
      try {
        encode(format, pictureOf(test::gradientImage(width, height)));
        ADD_FAILURE() << format.rawValue();
      } catch (const ImageProcessingError& error) {
        EXPECT_EQ(error.localizedDescription(),
                  ImageProcessingError::encodingFailed(format).localizedDescription());
      }
    }
  }
}

TEST(OutputFormat, encodesTheLongestSide) {
  for (const ImageFormat format :
       {ImageFormat::jpeg, ImageFormat::heic, ImageFormat::avif, ImageFormat::webp}) {
    const std::size_t longest = OutputFormat::of(format).maximumSide;
    EXPECT_NO_THROW(encode(format, pictureOf(test::gradientImage(longest, 1))))
        << format.rawValue();
    EXPECT_NO_THROW(encode(format, pictureOf(test::gradientImage(1, longest))))
        << format.rawValue();
  }
}

TEST(OutputFormat, repacksJPEGAsJPEGXLOnly) {
  for (const ImageFormat format : ImageFormat::allCases) {
    const auto& repacking = OutputFormat::of(format).repacking;
    ASSERT_EQ(repacking.has_value(), format == ImageFormat::jxl) << format.rawValue();
    if (!repacking) continue;
    EXPECT_EQ(repacking->source, ImageFormat::jpeg);
  }
}

}  // namespace
}  // namespace orvane
