#include "pipeline/ImageAnalyzer.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <initializer_list>
#include <random>
#include <set>
#include <vector>

namespace orvane {
namespace {

using Color = std::array<std::uint8_t, 4>;  ///< R, G, B, A

constexpr Color gray(int value) {
  const auto level = static_cast<std::uint8_t>(value);
  return {level, level, level, 255};
}

RGBABuffer drawBuffer(std::size_t width, std::size_t height,
                      const std::function<Color(std::size_t x, std::size_t y)>& colorAt) {
  const MutablePixelMemory pixels = makePixelMemory(width * height * 4);
  std::uint8_t* out = pixels.get();
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t x = 0; x < width; ++x) {
      const Color color = colorAt(x, y);
      out = std::copy(color.begin(), color.end(), out);
    }
  }
  return {width, height, pixels, ColorSpace::sRGB()};
}

ImageCharacteristics analyze(std::size_t width, std::size_t height,
                             const std::function<Color(std::size_t x, std::size_t y)>& colorAt) {
  return ImageAnalyzer::analyze(drawBuffer(width, height, colorAt));
}

using Steps = std::vector<int>;

/// `count` steps out of `cycle`, again and again.
Steps repeat(std::size_t count, std::initializer_list<int> cycle) {
  Steps steps;
  for (std::size_t at = 0; at < count; ++at) steps.push_back(cycle.begin()[at % cycle.size()]);
  return steps;
}

Steps operator+(Steps left, const Steps& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

/// Three equal rows of grey levels: one, one that is `lead` more, and from there on each `steps`
/// more than the one before. The samples are the columns between the first and the last; the step
/// behind a sample is its gradient, up to the rounding of luma.
ImageCharacteristics analyzeColumns(int first, int lead, const Steps& steps) {
  std::vector<int> columns{first, first + lead};
  for (const int step : steps) columns.push_back(columns.back() + step);
  return analyze(columns.size(), 3, [&](std::size_t x, std::size_t) { return gray(columns[x]); });
}

// Luma of these levels is exact: 0, 5, 6, 7, 9, 10, 15, 23, 24, 29 and 100.

TEST(ImageAnalyzer, takesTinyPicturesForFlatGraphics) {
  const auto checkered = [](std::size_t x, std::size_t y) -> Color {
    return (x + y) % 2 == 0 ? Color{0, 90, 255, 128} : gray(255);
  };
  for (const auto& [width, height] :
       {std::pair<std::size_t, std::size_t>{2, 50}, {50, 2}, {1, 1}}) {
    const ImageCharacteristics tiny = analyze(width, height, checkered);
    EXPECT_EQ(tiny, (ImageCharacteristics{.width = static_cast<std::int64_t>(width),
                                          .height = static_cast<std::int64_t>(height),
                                          .contentClass = ContentClass::flatGraphic,
                                          .uniqueColorCount = 1,
                                          .flatFraction = 1,
                                          .hasAlpha = true}));
  }
}

TEST(ImageAnalyzer, samplesTheCenterOfNinePixels) {
  const ImageCharacteristics center = analyze(3, 3, [](std::size_t x, std::size_t y) -> Color {
    if (x == 1 && y == 1) return {9, 9, 9, 100};
    return {5, 5, 5, static_cast<std::uint8_t>(x == 0 ? 30 : 255)};
  });
  EXPECT_EQ(center, (ImageCharacteristics{.width = 3,
                                          .height = 3,
                                          .contentClass = ContentClass::detailedPhoto,
                                          .uniqueColorCount = 1,
                                          .gradientFraction = 1,
                                          .noiseLevel = 16,
                                          .hasAlpha = true,
                                          .hasPartialTransparency = true}));
}

TEST(ImageAnalyzer, takesUniformPicturesForFlatGraphics) {
  for (const auto& [width, height] :
       {std::pair<std::size_t, std::size_t>{3, 3}, {640, 480}, {1, 4000}, {1600, 1000}}) {
    const ImageCharacteristics uniform =
        analyze(width, height, [](std::size_t, std::size_t) -> Color {
          return {7, 99, 200, 255};
        });
    EXPECT_EQ(uniform.contentClass, ContentClass::flatGraphic);
    EXPECT_EQ(uniform.uniqueColorCount, 1);
    EXPECT_FALSE(uniform.uniqueColorsCapped);
    EXPECT_EQ(uniform.flatFraction, 1);
    EXPECT_EQ(uniform.edgeFraction, 0);
    EXPECT_EQ(uniform.gradientFraction, 0);
    EXPECT_EQ(uniform.noiseLevel, 0);
    EXPECT_FALSE(uniform.hasAlpha);
    EXPECT_FALSE(uniform.hasPartialTransparency);
  }
}

TEST(ImageAnalyzer, countsAGradientOfTwentyFourAsAnEdge) {
  EXPECT_EQ(analyzeColumns(0, 0, {24}).edgeFraction, 1);
  EXPECT_EQ(analyzeColumns(0, 0, {23}).edgeFraction, 0);
}

TEST(ImageAnalyzer, countsGradientsOfAHalfToFourAsGentle) {
  const auto gentle = [](Color center, Color right) {
    return analyze(3, 3, [&](std::size_t x, std::size_t) { return x == 2 ? right : center; })
        .gradientFraction;
  };
  EXPECT_EQ(gentle(gray(100), {0, 138, 171, 255}), 1);  // luma 100 and 100.5, exactly
  EXPECT_EQ(gentle(gray(0), {0, 0, 4, 255}), 0);        // 0.456
  EXPECT_EQ(gentle(gray(5), gray(9)), 1);               // 4, exactly
  EXPECT_EQ(gentle(gray(0), {0, 7, 0, 255}), 0);        // 4.109
  EXPECT_EQ(gentle(gray(5), gray(5)), 0);
}

TEST(ImageAnalyzer, takesTheLargerOfTheGradientsToTheRightAndDown) {
  const auto edge = [](std::size_t edgeX, std::size_t edgeY) {
    return analyze(3, 3,
                   [&](std::size_t x, std::size_t y) {
                     return gray(x == edgeX && y == edgeY ? 200 : 5);
                   })
        .edgeFraction;
  };
  EXPECT_EQ(edge(2, 1), 1);
  EXPECT_EQ(edge(1, 2), 1);
  EXPECT_EQ(edge(0, 1), 0);
  EXPECT_EQ(edge(1, 0), 0);
  EXPECT_EQ(edge(2, 2), 0);
}

TEST(ImageAnalyzer, measuresNoiseOutsideEdgesOnly) {
  const ImageCharacteristics alternating = analyzeColumns(105, -100, repeat(40, {100, -100}));
  EXPECT_EQ(alternating.edgeFraction, 1);
  EXPECT_EQ(alternating.noiseLevel, 0);
  EXPECT_EQ(alternating.contentClass, ContentClass::photo);
  // One sample of four beside an edge: |4·5 − 105 − 3·5| over the three that are none.
  EXPECT_DOUBLE_EQ(analyzeColumns(105, -100, {0, 0, 0, 100}).noiseLevel, 100.0 / 3);
}

TEST(ImageAnalyzer, takesMostlyFlatPicturesOfFewColorsForFlatGraphics) {
  const auto flat = [](std::size_t count) {
    return analyzeColumns(5, 0, repeat(count, {0}) + repeat(20 - count, {1, -1})).contentClass;
  };
  EXPECT_EQ(flat(10), ContentClass::flatGraphic);
  EXPECT_EQ(flat(9), ContentClass::illustration);  // 0.45 is not above 0.45
}

TEST(ImageAnalyzer, takesFlatPicturesWithEdgesForScreenContent) {
  const auto screen = [](std::size_t flat, std::size_t edges) {
    const Steps steps =
        repeat(flat, {0}) + repeat(edges, {100, -100}) + repeat(100 - flat - edges, {1});
    return analyzeColumns(5, 0, steps).contentClass;
  };
  EXPECT_EQ(screen(36, 2), ContentClass::screenContent);
  EXPECT_EQ(screen(36, 1), ContentClass::illustration);  // 0.01 is not above 0.01
  EXPECT_EQ(screen(35, 2), ContentClass::illustration);  // nor 0.35 above 0.35
}

TEST(ImageAnalyzer, takesQuietPicturesThatAreFlatInPlacesForIllustrations) {
  const auto flat = [](std::size_t count) {
    return analyzeColumns(5, 0, repeat(count, {0}) + repeat(100 - count, {1})).contentClass;
  };
  EXPECT_EQ(flat(9), ContentClass::illustration);
  EXPECT_EQ(flat(8), ContentClass::photo);
}

TEST(ImageAnalyzer, takesNoPictureOfNoiseThreeForAnIllustration) {
  const Steps steps = repeat(40, {0, 4, -2, -2});
  const ImageCharacteristics noisy = analyzeColumns(7, -2, steps);
  EXPECT_EQ(noisy.noiseLevel, 3);
  EXPECT_EQ(noisy.contentClass, ContentClass::photo);
  const ImageCharacteristics quieter = analyzeColumns(5, 0, repeat(4, {0}) + steps);
  EXPECT_LT(quieter.noiseLevel, 3);
  EXPECT_GT(quieter.noiseLevel, 2.5);
  EXPECT_EQ(quieter.contentClass, ContentClass::illustration);
}

TEST(ImageAnalyzer, takesPicturesOfNoiseAboveEightForDetailedPhotos) {
  const ImageCharacteristics eight = analyzeColumns(9, -4, repeat(40, {4, -4}));
  EXPECT_EQ(eight.noiseLevel, 8);
  EXPECT_EQ(eight.contentClass, ContentClass::photo);
  const ImageCharacteristics more = analyzeColumns(10, -5, repeat(40, {5, -5}));
  EXPECT_EQ(more.noiseLevel, 10);
  EXPECT_EQ(more.contentClass, ContentClass::detailedPhoto);
}

enum class Contrast { low, high };

/// A square, flat grey picture with `count` - 1 single pixels, each of a colour of its own.
ImageCharacteristics analyzeDots(std::size_t side, std::size_t spacing, std::size_t count,
                                 Contrast contrast) {
  const std::size_t dotsPerRow = (side - 3) / spacing;
  return analyze(side, side, [&](std::size_t x, std::size_t y) -> Color {
    const std::size_t dot = y / spacing * dotsPerRow + x / spacing;
    const bool isDot = x % spacing == 1 && y % spacing == 1 && x / spacing < dotsPerRow;
    if (!isDot || dot + 1 >= count) return gray(128);
    const auto red = static_cast<std::uint8_t>(112 + dot / 256 % 32);
    const auto green =
        static_cast<std::uint8_t>(contrast == Contrast::high ? 255 : 126 + dot / 8192);
    return {red, green, static_cast<std::uint8_t>(dot % 256), 255};
  });
}

TEST(ImageAnalyzer, takesNoPictureOfMoreThan4096ColorsForAFlatGraphic) {
  const ImageCharacteristics fewer = analyzeDots(353, 5, 4096, Contrast::low);
  EXPECT_EQ(fewer.uniqueColorCount, 4096);
  EXPECT_EQ(fewer.contentClass, ContentClass::flatGraphic);
  const ImageCharacteristics more = analyzeDots(353, 5, 4097, Contrast::low);
  EXPECT_EQ(more.uniqueColorCount, 4097);
  EXPECT_FALSE(more.uniqueColorsCapped);
  EXPECT_GE(more.flatFraction, 0.9);
  EXPECT_EQ(more.edgeFraction, 0);
  EXPECT_LT(more.noiseLevel, 3);
  EXPECT_EQ(more.contentClass, ContentClass::illustration);
  const ImageCharacteristics hard = analyzeDots(353, 5, 4097, Contrast::high);
  EXPECT_EQ(hard.uniqueColorCount, 4097);
  EXPECT_GT(hard.edgeFraction, 0.01);
  EXPECT_EQ(hard.contentClass, ContentClass::screenContent);
}

TEST(ImageAnalyzer, stopsCountingAt16384Colors) {
  const ImageCharacteristics fewer = analyzeDots(1000, 7, 16383, Contrast::low);
  EXPECT_EQ(fewer.uniqueColorCount, 16383);
  EXPECT_FALSE(fewer.uniqueColorsCapped);
  EXPECT_EQ(fewer.contentClass, ContentClass::illustration);
  for (const std::size_t count : {16384, 16385}) {
    const ImageCharacteristics capped = analyzeDots(1000, 7, count, Contrast::low);
    EXPECT_EQ(capped.uniqueColorCount, 16384);
    EXPECT_TRUE(capped.uniqueColorsCapped);
    EXPECT_GT(capped.flatFraction, 0.9);
    EXPECT_LT(capped.noiseLevel, 3);
    EXPECT_EQ(capped.contentClass, ContentClass::photo);
  }
}

TEST(ImageAnalyzer, countsColorsThatDifferInAlphaAsOne) {
  const ImageCharacteristics one = analyze(20, 20, [](std::size_t x, std::size_t y) -> Color {
    return {10, 20, 30, static_cast<std::uint8_t>(x * 10 + y)};
  });
  EXPECT_EQ(one.uniqueColorCount, 1);
  const ImageCharacteristics ten = analyze(12, 5, [](std::size_t x, std::size_t) -> Color {
    return {10, static_cast<std::uint8_t>(x), 30, 255};
  });
  EXPECT_EQ(ten.uniqueColorCount, 10);
}

/// Opaque but for one pixel.
ImageCharacteristics analyzeHole(std::size_t width, std::size_t height, std::size_t holeX,
                                 std::size_t holeY, std::uint8_t alpha) {
  return analyze(width, height, [&](std::size_t x, std::size_t y) -> Color {
    return {50, 60, 70, x == holeX && y == holeY ? alpha : std::uint8_t{255}};
  });
}

TEST(ImageAnalyzer, findsPartialTransparencyInSamplesOnly) {
  EXPECT_TRUE(analyzeHole(20, 20, 5, 5, 128).hasPartialTransparency);
  EXPECT_TRUE(analyzeHole(20, 20, 5, 5, 1).hasPartialTransparency);
  EXPECT_TRUE(analyzeHole(20, 20, 5, 5, 254).hasPartialTransparency);
  const ImageCharacteristics clear = analyzeHole(20, 20, 5, 5, 0);
  EXPECT_FALSE(clear.hasPartialTransparency);
  EXPECT_TRUE(clear.hasAlpha);
  const ImageCharacteristics border = analyzeHole(20, 20, 19, 5, 128);
  EXPECT_FALSE(border.hasPartialTransparency);
  EXPECT_TRUE(border.hasAlpha);
}

TEST(ImageAnalyzer, samplesMoreSparselyAbove1200000Pixels) {
  EXPECT_TRUE(analyzeHole(1200, 1000, 2, 1, 128).hasPartialTransparency);
  EXPECT_FALSE(analyzeHole(1201, 1000, 2, 1, 128).hasPartialTransparency);
  EXPECT_FALSE(analyzeHole(1201, 1000, 1, 2, 128).hasPartialTransparency);
  EXPECT_TRUE(analyzeHole(1201, 1000, 3, 1, 128).hasPartialTransparency);
  EXPECT_TRUE(analyzeHole(2400, 2000, 3, 3, 128).hasPartialTransparency);
  EXPECT_FALSE(analyzeHole(2401, 2000, 3, 3, 128).hasPartialTransparency);
  EXPECT_TRUE(analyzeHole(2401, 2000, 4, 4, 128).hasPartialTransparency);
}

double plainLuma(const std::uint8_t* p) { return 0.299 * p[0] + 0.587 * p[1] + 0.114 * p[2]; }

/// The definition, written down without any thought of speed; `contentClass` is left alone.
ImageCharacteristics plainStatistics(const RGBABuffer& buffer) {
  const std::size_t width = buffer.width;
  const std::size_t height = buffer.height;
  const auto step = static_cast<std::size_t>(
      std::ceil(std::sqrt(static_cast<double>(width * height) / 1'200'000)));
  std::set<std::array<std::uint8_t, 3>> colors;
  double samples = 0, flat = 0, edges = 0, gentle = 0, smooth = 0, sum = 0;
  bool hasPartialTransparency = false;
  const auto at = [&](std::size_t x, std::size_t y) { return &buffer.pixels[(y * width + x) * 4]; };
  for (std::size_t y = 1; y < height - 1; y += step) {
    for (std::size_t x = 1; x < width - 1; x += step) {
      const std::uint8_t* pixel = at(x, y);
      samples += 1;
      if (colors.size() < 16384) colors.insert({pixel[0], pixel[1], pixel[2]});
      if (pixel[3] != 0 && pixel[3] != 255) hasPartialTransparency = true;
      const double center = plainLuma(pixel);
      const double gradient = std::max(std::abs(center - plainLuma(at(x + 1, y))),
                                       std::abs(center - plainLuma(at(x, y + 1))));
      if (gradient == 0) flat += 1;
      if (gradient >= 24) {
        edges += 1;
        continue;
      }
      smooth += 1;
      if (gradient >= 0.5 && gradient <= 4.0) gentle += 1;
      sum += std::abs(4 * center - plainLuma(at(x - 1, y)) - plainLuma(at(x + 1, y)) -
                      plainLuma(at(x, y - 1)) - plainLuma(at(x, y + 1)));
    }
  }
  return {.width = static_cast<std::int64_t>(width),
          .height = static_cast<std::int64_t>(height),
          .uniqueColorCount = static_cast<std::int64_t>(colors.size()),
          .uniqueColorsCapped = colors.size() >= 16384,
          .flatFraction = flat / samples,
          .edgeFraction = edges / samples,
          .gradientFraction = gentle / samples,
          .noiseLevel = smooth > 0 ? sum / smooth : 0,
          .hasAlpha = buffer.hasAlpha,
          .hasPartialTransparency = hasPartialTransparency};
}

TEST(ImageAnalyzer, isBitForBitWhatTheDefinitionSays) {
  std::mt19937 random(20250102);  // the standard fixes its sequence
  constexpr std::array<std::pair<std::size_t, std::size_t>, 6> sizes{
      {{3, 3}, {4, 7}, {131, 97}, {400, 300}, {1300, 950}, {2500, 2003}}};
  for (const auto& [width, height] : sizes) {
    // From flat patches over soft slopes to noise.
    for (const unsigned spread : {1U, 4U, 30U, 256U}) {
      const RGBABuffer buffer = drawBuffer(width, height, [&](std::size_t x, std::size_t y) {
        const auto channel = [&](std::size_t base) {
          return static_cast<std::uint8_t>(base / 16 * 5 + random() % spread);
        };
        return Color{channel(x), channel(y), channel(x + y),
                     static_cast<std::uint8_t>(random() % 50 == 0 ? random() % 256 : 255)};
      });
      ImageCharacteristics found = ImageAnalyzer::analyze(buffer);
      found.contentClass = ImageCharacteristics().contentClass;
      EXPECT_EQ(found, plainStatistics(buffer)) << width << " × " << height << ", " << spread;
    }
  }
}

}  // namespace
}  // namespace orvane
