#include "codecs/jpeg/CoefficientCoder.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/TestImages.h"

namespace orvane {
namespace {

using Chroma = JPEGSettings::Chroma;
using test::Pixel;

/// Codes into planes that the caller made.
void code(const Image& image, const JPEGSettings& settings, CoefficientPlanes& planes) {
  OpaqueRows rows(image);
  CoefficientCoder(rows, settings, planes).code();
}

JPEGSettings finest(Chroma chroma) {
  JPEGSettings settings{.lumaScale = 0.03, .chromaScale = 0.03, .chroma = chroma};
  settings.lumaSteps.fill(1);
  settings.chromaSteps.fill(1);
  return settings;
}

/// Every pixel of a component of a picture, restored from steps of 1.
template <typename Meant>
void expectSamples(CoefficientPlanes& planes, std::size_t component, std::size_t width,
                   std::size_t height, const Meant& meant) {
  for (std::size_t row = 0; row < planes.rows(component); ++row) {
    for (std::size_t column = 0; column < planes.columns(component); ++column) {
      const std::int16_t* const levels = planes.block(component, row, column);
      Block block;
      for (std::size_t i = 0; i < 64; ++i) block[i] = levels[i];
      transformBack(block);
      for (std::size_t i = 0; i < 64; ++i) {
        const std::size_t x = column * 8 + i % 8;
        const std::size_t y = row * 8 + i / 8;
        if (x >= width || y >= height) continue;
        ASSERT_NEAR(block[i] + 128, meant(x, y), 4) << x << ", " << y;
      }
    }
  }
}

TEST(CoefficientCoder, codesEveryBlockOfEveryComponent) {
  const Image image = test::gradientImage(45, 37);
  const auto channel = [&](std::size_t x, std::size_t y, std::size_t c) {
    return static_cast<double>(test::pixelAt(image, x, y)[c]);
  };
  for (const Chroma chroma : {Chroma::full, Chroma::halved}) {
    CoefficientPlanes planes(45, 37, 3, chroma);
    code(image, finest(chroma), planes);
    expectSamples(planes, 0, 45, 37, [&](std::size_t x, std::size_t y) {
      return 0.299 * channel(x, y, 0) + 0.587 * channel(x, y, 1) + 0.114 * channel(x, y, 2);
    });
    const std::size_t step = chroma == Chroma::full ? 1 : 2;
    expectSamples(planes, 2, 45 / step, 37 / step, [&](std::size_t x, std::size_t y) {
      return 128 + 0.5 * channel(x * step, y * step, 0) - 0.4187 * channel(x * step, y * step, 1) -
             0.0813 * channel(x * step, y * step, 2);
    });
  }
}

TEST(CoefficientCoder, codesGrayPicturesAsLuma) {
  const auto shade = [](std::size_t x, std::size_t y) { return 40 + x * 2 + y; };
  const Image image = test::drawImage(30, 20, ChannelLayout::rgba, AlphaKind::none, 8,
                                      ColorSpace::sRGB(), [&](std::size_t x, std::size_t y) {
                                        const auto level = static_cast<std::uint16_t>(shade(x, y));
                                        return Pixel{level, level, level, 255};
                                      });
  CoefficientPlanes planes(30, 20, 1, Chroma::halved);
  code(image, finest(Chroma::halved), planes);
  expectSamples(planes, 0, 30, 20,
                [&](std::size_t x, std::size_t y) { return static_cast<double>(shade(x, y)); });
}

/// How many of luma's levels are not 0, on a faint grain over one colour.
std::size_t countLevels(const Pixel& color) {
  const Image image = test::drawImage(
      64, 64, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
      [&](std::size_t x, std::size_t y) {
        const auto grain = static_cast<std::uint16_t>((x * 7 + y * 13 + x * y) % 23);
        return Pixel{static_cast<std::uint16_t>(color[0] + grain),
                     static_cast<std::uint16_t>(color[1] + grain),
                     static_cast<std::uint16_t>(color[2] + grain), 255};
      });
  CoefficientPlanes planes(64, 64, 3, Chroma::halved);
  code(image, JPEGSettings::forPicture(0.75, 0), planes);
  std::size_t count = 0;
  for (std::size_t i = 0; i < 64; ++i) {
    count += 64 - static_cast<std::size_t>(std::count(planes.block(0, i / 8, i % 8),
                                                      planes.block(0, i / 8, i % 8) + 64, 0));
  }
  return count;
}

TEST(CoefficientCoder, keepsMoreDetailOfSaturatedRed) {
  EXPECT_GT(countLevels({180, 40, 40}), countLevels({40, 40, 180}));
}

}  // namespace
}  // namespace orvane
