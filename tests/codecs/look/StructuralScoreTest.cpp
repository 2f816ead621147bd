#include "codecs/look/StructuralScore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/TestImages.h"

namespace orvane {
namespace {

struct Color {
  int red, green, blue;
};

Color waves(std::size_t x, std::size_t y) {
  const auto dx = static_cast<double>(x);
  const auto dy = static_cast<double>(y);
  const auto wave = [&](double width, double height) {
    return static_cast<int>(std::lround(128 + 70 * std::sin(dx / width) * std::cos(dy / height) +
                                        30 * std::sin((dx + dy) / 3)));
  };
  return {wave(17, 23), wave(19, 29), wave(31, 13)};
}

template <class ColorAt>
Image draw(std::size_t width, std::size_t height, ColorAt colorAt) {
  return test::drawImage(
      width, height, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
      [&](std::size_t x, std::size_t y) {
        const Color color = colorAt(x, y);
        const auto clamped = [](int value) {
          return static_cast<std::uint16_t>(std::clamp(value, 0, 255));
        };
        return test::Pixel{clamped(color.red), clamped(color.green), clamped(color.blue), 255};
      });
}

template <class ColorAt>
double scoreOf(ColorAt colorAt) {
  return StructuralScore(draw(320, 240, waves)).of(draw(320, 240, colorAt));
}

// The expected scores are those of libjxl 0.11's ssimulacra2.

TEST(StructuralScore, isThatOfThePublishedMeasureForGrain) {
  EXPECT_NEAR(scoreOf([](std::size_t x, std::size_t y) {
                const Color color = waves(x, y);
                const int grain = static_cast<int>((x * 7 + y * 13) % 11) - 5;
                return Color{color.red + grain, color.green + grain, color.blue + grain};
              }),
              90.472, 0.1);
}

TEST(StructuralScore, isThatOfThePublishedMeasureForSteps) {
  EXPECT_NEAR(
      scoreOf([](std::size_t x, std::size_t y) {
        const Color color = waves(x, y);
        return Color{color.red / 12 * 12 + 6, color.green / 12 * 12 + 6, color.blue / 12 * 12 + 6};
      }),
      88.729, 0.1);
}

TEST(StructuralScore, isThatOfThePublishedMeasureForBlocksOfOtherColors) {
  EXPECT_NEAR(scoreOf([](std::size_t x, std::size_t y) {
                const Color color = waves(x, y);
                const int shift = static_cast<int>((x / 16 * 5 + y / 16 * 3) % 7) - 3;
                return Color{color.red + shift, color.green, color.blue - 2 * shift};
              }),
              78.702, 0.1);
}

TEST(StructuralScore, isThatOfThePublishedMeasureForLostDetail) {
  EXPECT_NEAR(scoreOf([](std::size_t x, std::size_t y) {
                const Color a = waves(x, y);
                const Color b = waves(x + 1, y);
                const Color c = waves(x, y + 1);
                return Color{(a.red + b.red + c.red) / 3, (a.green + b.green + c.green) / 3,
                             (a.blue + b.blue + c.blue) / 3};
              }),
              52.476, 0.1);
}

TEST(StructuralScore, isAHundredForTheSamePicture) {
  EXPECT_EQ(scoreOf(waves), 100);
  const Image odd = test::noisyImage(131, 77);
  EXPECT_EQ(StructuralScore(odd).of(odd), 100);
}

TEST(StructuralScore, leavesOutTheScalesThatASmallPictureLacks) {
  const auto grain = [](std::size_t x, std::size_t y) {
    const Color color = waves(x, y);
    const int shift = static_cast<int>((x + y) % 2) * 20;
    return Color{color.red + shift, color.green + shift, color.blue + shift};
  };
  const double small = StructuralScore(draw(9, 9, waves)).of(draw(9, 9, grain));
  EXPECT_LT(small, 100);
  EXPECT_EQ(StructuralScore(draw(7, 200, waves)).of(draw(7, 200, grain)), 100);
}

}  // namespace
}  // namespace orvane
