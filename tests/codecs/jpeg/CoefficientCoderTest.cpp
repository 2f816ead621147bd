#include "codecs/jpeg/CoefficientCoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

#include "support/Luminance.h"
#include "support/TestImages.h"

namespace orvane {
namespace {

using Chroma = JPEGSettings::Chroma;
using test::Pixel;

/// Luma, and Cb and Cr where there are three.
using Planes = std::vector<CoefficientPlane>;

Planes codeGray(const Image& image, const JPEGSettings& settings) {
  OpaqueRows rows(image);
  Planes planes;
  planes.push_back(CoefficientCoder(rows, settings).codeLuma());
  return planes;
}

Planes codeColor(const Image& image, const JPEGSettings& settings) {
  OpaqueRows rows(image);
  CoefficientCoder coder(rows, settings);
  coder.decodeChroma(coder.codeChroma());
  Planes planes;
  planes.push_back(coder.codeLuma());
  for (CoefficientPlane& chroma : coder.codeChroma()) planes.push_back(std::move(chroma));
  return planes;
}

JPEGSettings finest(Chroma chroma) {
  JPEGSettings settings{.lumaScale = 0.03, .chromaScale = 0.03, .chroma = chroma};
  settings.lumaSteps.fill(1);
  settings.chromaSteps.fill(1);
  return settings;
}

/// The samples of a block, less 128, that steps of 1 restore.
Block restoredBlock(const Planes& planes, std::size_t component, std::size_t row,
                    std::size_t column) {
  const std::int16_t* const levels = planes[component].block(row, column);
  Block block;
  for (std::size_t i = 0; i < 64; ++i) block[i] = levels[i];
  transformBack(block);
  return block;
}

/// Every pixel of a component of a picture, restored from steps of 1.
template <typename Meant>
void expectSamples(const Planes& planes, std::size_t component, std::size_t width,
                   std::size_t height, const Meant& meant) {
  for (std::size_t row = 0; row < planes[component].rows(); ++row) {
    for (std::size_t column = 0; column < planes[component].columns(); ++column) {
      const Block block = restoredBlock(planes, component, row, column);
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
    const Planes planes = codeColor(image, finest(chroma));
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
  const Planes planes = codeGray(image, finest(Chroma::full));
  expectSamples(planes, 0, 30, 20,
                [&](std::size_t x, std::size_t y) { return static_cast<double>(shade(x, y)); });
}

TEST(CoefficientCoder, keepsTheLuminanceThatHalvedChromaShifts) {
  const std::array<Pixel, 2> colors{Pixel{200, 200, 40, 255}, Pixel{180, 180, 180, 255}};
  const auto colorAt = [&](std::size_t x, std::size_t y) { return colors.at((x + y) % 2); };
  const Image checker =
      test::drawImage(16, 16, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(), colorAt);
  const Planes planes = codeColor(checker, finest(Chroma::halved));
  const Block luma = restoredBlock(planes, 0, 0, 0);
  const float cb = restoredBlock(planes, 1, 0, 0)[0];
  const float cr = restoredBlock(planes, 2, 0, 0)[0];
  double error = 0;
  double errorOfPlainLuma = 0;
  for (std::size_t i = 0; i < 64; ++i) {
    const Pixel color = colorAt(i % 8, i / 8);
    const double plain = 0.299 * color[0] + 0.587 * color[1] + 0.114 * color[2];
    const double meant = test::luminanceOf(color[0], color[1], color[2]);
    error += std::abs(test::shownLuminance(luma[i] + 128, cb, cr) - meant);
    errorOfPlainLuma += std::abs(test::shownLuminance(plain, cb, cr) - meant);
  }
  EXPECT_LT(error, errorOfPlainLuma / 2);
}

/// How many levels beside the means are not 0, in `count` columns of a component's blocks.
std::size_t countLevels(const Planes& planes, std::size_t component, std::size_t first,
                        std::size_t count) {
  std::size_t sum = 0;
  for (std::size_t row = 0; row < planes[component].rows(); ++row) {
    for (std::size_t column = first; column < first + count; ++column) {
      const std::int16_t* const levels = planes[component].block(row, column);
      sum += 63 - static_cast<std::size_t>(std::count(levels + 1, levels + 64, 0));
    }
  }
  return sum;
}

Pixel shifted(const Pixel& color, int red, int green, int blue) {
  const auto sum = [](int a, int b) { return static_cast<std::uint16_t>(a + b); };
  return {sum(color[0], red), sum(color[1], green), sum(color[2], blue), 255};
}

/// Two halves, of 64 pixels a side. `draw` tells the colour of a pixel of the right or left one.
template <typename Draw>
Image twoHalves(const Draw& draw) {
  return test::drawImage(128, 64, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
                         [&](std::size_t x, std::size_t y) { return draw(x >= 64, x % 64, y); });
}

int grainAt(std::size_t x, std::size_t y) {
  return static_cast<int>((x * 7 + y * 13 + x * y) % 23) - 11;
}

bool isChecked(std::size_t x, std::size_t y) { return (x / 2 + y / 2) % 2 == 0; }

TEST(CoefficientCoder, keepsMoreDetailOfSaturatedRed) {
  const Image image = twoHalves([](bool isRight, std::size_t x, std::size_t y) {
    const int grain = grainAt(x, y) / 2;
    const Pixel color = isRight ? Pixel{180, 50, 50, 255} : Pixel{50, 50, 180, 255};
    return shifted(color, grain, grain, grain);
  });
  const Planes planes = codeColor(image, JPEGSettings::forPicture(0.75, 0));
  // The columns beside the middle show the other half's colour too.
  EXPECT_GT(countLevels(planes, 0, 9, 7), countLevels(planes, 0, 0, 7) * 5 / 4);
}

TEST(CoefficientCoder, dropsLumaThatDetailHides) {
  const Image image = twoHalves([](bool isRight, std::size_t x, std::size_t y) {
    const bool isGrain = !isRight || (x / 8 + y / 8) % 2 == 0;
    const int shift = isGrain ? grainAt(x % 8, y % 8) : isChecked(x, y) ? -50 : 50;
    return shifted({100, 100, 100, 255}, shift, shift, shift);
  });
  const Planes planes = codeGray(image, JPEGSettings::forPicture(0.75, 1));
  const auto count = [&](std::size_t column) {
    return 64 - std::count(planes[0].block(4, column), planes[0].block(4, column) + 64, 0);
  };
  EXPECT_LT(count(12), count(2));
}

TEST(CoefficientCoder, dropsChromaThatDetailHides) {
  const Image image = twoHalves([](bool isRight, std::size_t x, std::size_t y) {
    const int luma = isRight && isChecked(x, y) ? 180 : 100;
    const int grain = grainAt(x / 2, y / 2) * 3 / 2;
    return Pixel{static_cast<std::uint16_t>(luma + grain), static_cast<std::uint16_t>(luma),
                 static_cast<std::uint16_t>(luma - grain), 255};
  });
  for (const Chroma chroma : {Chroma::full, Chroma::halved}) {
    const Planes planes =
        codeColor(image, JPEGSettings::forPicture(0.75, chroma == Chroma::full ? 1 : 0));
    const std::size_t half = planes[1].columns() / 2;
    for (const std::size_t component : {1u, 2u}) {
      EXPECT_LT(countLevels(planes, component, half, half),
                countLevels(planes, component, 0, half));
    }
  }
}

}  // namespace
}  // namespace orvane
