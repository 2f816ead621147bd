#include "codecs/TransformativeProperties.h"

#include <gtest/gtest.h>

#include "codecs/ImageSource.h"
#include "pipeline/ImageDecoder.h"
#include "support/TestImages.h"

namespace orvane {
namespace {

using Mirror = TransformativeProperties::Mirror;
using test::Pixel;

/// A crop to `width` × `height`, its centre that many half pixels from the picture's.
CleanAperture aperture(std::uint32_t width, std::uint32_t height, int halvesRight, int halvesDown) {
  return {{width, 1},
          {height, 1},
          {static_cast<std::uint32_t>(halvesRight), 2},
          {static_cast<std::uint32_t>(halvesDown), 2}};
}

Image numbered(std::size_t width, std::size_t height) {
  return test::drawImage(
      width, height, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
      [](std::size_t x, std::size_t y) -> Pixel {
        return {static_cast<std::uint16_t>(x * 10), static_cast<std::uint16_t>(y * 10), 0, 255};
      });
}

/// `stored` as `properties` show it.
Image shown(const TransformativeProperties& properties, const Image& stored) {
  const Image cropped = properties.cropped(stored);
  return ImageDecoder::applyOrientation(properties.orientation(), cropped).value_or(cropped);
}

/// One step at a time, each on the picture that the step before has left: what the composition must
/// agree with.
class StepByStep {
 public:
  explicit StepByStep(Image stored) : image(std::move(stored)) {}

  void crop(const CleanAperture& box) {
    apply([&](TransformativeProperties& properties) { properties.crop(box); });
  }
  void turn(int quarters) {
    apply([&](TransformativeProperties& properties) { properties.turn(quarters); });
  }
  void mirror(Mirror exchanged) {
    apply([&](TransformativeProperties& properties) { properties.mirror(exchanged); });
  }

  Image image;

 private:
  template <class Step>
  void apply(Step step) {
    TransformativeProperties properties(image.width, image.height);
    step(properties);
    image = shown(properties, image);
  }
};

TEST(TransformativeProperties, changeNothingAsLongAsThereAreNone) {
  const Image picture = numbered(7, 5);
  const TransformativeProperties none(7, 5);
  EXPECT_EQ(none.orientation(), 1);
  EXPECT_EQ(none.cropped(picture).pixels, picture.pixels);
}

TEST(TransformativeProperties, giveEachTurnAndMirrorImageItsEXIFNumber) {
  TransformativeProperties turned(4, 3);
  turned.turn(1);
  EXPECT_EQ(turned.orientation(), 8);
  TransformativeProperties leftRight(4, 3);
  leftRight.mirror(Mirror::leftRight);
  EXPECT_EQ(leftRight.orientation(), 2);
  TransformativeProperties topBottom(4, 3);
  topBottom.mirror(Mirror::topBottom);
  EXPECT_EQ(topBottom.orientation(), 4);
}

TEST(TransformativeProperties, showTheSameAtOnceAsStepByStep) {
  const Image picture = numbered(20, 13);
  for (int orientation = 0; orientation < 16; ++orientation) {
    TransformativeProperties atOnce(20, 13);
    StepByStep expected(picture);
    const auto both = [&](auto step) {
      step(atOnce);
      step(expected);
    };
    both([&](auto& target) { target.turn(orientation % 4); });
    if (orientation >= 8) both([](auto& target) { target.mirror(Mirror::topBottom); });
    if (orientation % 8 >= 4) both([](auto& target) { target.mirror(Mirror::leftRight); });
    both([](auto& target) { target.crop(aperture(10, 9, -2, 4)); });
    both([](auto& target) { target.turn(3); });
    both([](auto& target) { target.mirror(Mirror::leftRight); });
    both([](auto& target) { target.crop(aperture(4, 5, 3, -1)); });
    both([](auto& target) { target.turn(1); });
    const Image got = shown(atOnce, picture);
    ASSERT_EQ(got.width, 5u);
    ASSERT_EQ(got.height, 4u);
    for (std::size_t y = 0; y < 4; ++y) {
      for (std::size_t x = 0; x < 5; ++x) {
        EXPECT_EQ(test::pixelAt(got, x, y), test::pixelAt(expected.image, x, y))
            << orientation << ": " << x << "," << y;
      }
    }
  }
}

TEST(TransformativeProperties, refuseACropOutsideOfTheTurnedPicture) {
  TransformativeProperties upright(20, 13);
  EXPECT_NO_THROW(upright.crop(aperture(20, 13, 0, 0)));
  TransformativeProperties turned(20, 13);
  turned.turn(1);
  EXPECT_THROW(turned.crop(aperture(20, 13, 0, 0)), UnreadableImage);
  TransformativeProperties cropped(20, 13);
  cropped.crop(aperture(6, 6, 0, 0));
  EXPECT_THROW(cropped.crop(aperture(7, 6, 0, 0)), UnreadableImage);
}

}  // namespace
}  // namespace orvane
