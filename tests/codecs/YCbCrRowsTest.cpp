#include "codecs/YCbCrRows.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "platform/foundation/Bytes.h"
#include "support/Luminance.h"

namespace orvane {
namespace {

using Pixel = std::array<std::uint8_t, 4>;

constexpr Pixel red{230, 20, 30, 255};
constexpr Pixel blue{20, 40, 220, 255};

/// Four pixels as planes.
struct Planes {
  std::array<int, 4> luma;  ///< row by row
  int cb, cr;
};

Planes planesOf(const std::array<Pixel, 4>& quad) {
  const Bytes upper{quad[0][0], quad[0][1], quad[0][2], quad[0][3],
                    quad[1][0], quad[1][1], quad[1][2], quad[1][3]};
  const Bytes lower{quad[2][0], quad[2][1], quad[2][2], quad[2][3],
                    quad[3][0], quad[3][1], quad[3][2], quad[3][3]};
  std::array<std::uint8_t, 4> luma{};
  std::uint8_t cb = 0;
  std::uint8_t cr = 0;
  YCbCrRows::writeColor(upper.data(), lower.data(), 2, {&luma[0], &luma[2], &cb, &cr});
  return {{luma[0], luma[1], luma[2], luma[3]}, cb, cr};
}

TEST(YCbCrRows, keepsGreysExactly) {
  for (int level = 0; level < 256; ++level) {
    const auto grey = static_cast<std::uint8_t>(level);
    const auto beside = static_cast<std::uint8_t>(255 - level);
    const Planes planes = planesOf({{{grey, grey, grey, 255},
                                     {beside, beside, beside, 255},
                                     {grey, grey, grey, 255},
                                     {grey, grey, grey, 255}}});
    EXPECT_EQ(planes.luma, (std::array{level, 255 - level, level, level}));
    EXPECT_EQ(planes.cb, 128);
    EXPECT_EQ(planes.cr, 128);
  }
}

TEST(YCbCrRows, codesPlainColorsByBT601) {
  const Planes planes = planesOf({red, red, red, red});
  for (const int luma : planes.luma) EXPECT_NEAR(luma, 83.9, 0.8);
  EXPECT_NEAR(planes.cb, 97.6, 0.5);
  EXPECT_NEAR(planes.cr, 232.2, 0.5);
}

TEST(YCbCrRows, sharesTheChromaOfTheMeanInLinearLight) {
  const Planes planes = planesOf({red, blue, red, blue});
  // The mean is 170, 32, 163.
  EXPECT_NEAR(planes.cb, 128 - 0.168736 * 170 - 0.331264 * 32 + 0.5 * 163, 1.5);
  EXPECT_NEAR(planes.cr, 128 + 0.5 * 170 - 0.418688 * 32 - 0.081312 * 163, 1.5);
}

TEST(YCbCrRows, weightsChromaWithAlpha) {
  const Pixel hidden{20, 40, 220, 0};
  const Planes planes = planesOf({red, hidden, hidden, hidden});
  EXPECT_NEAR(planes.cb, 97.6, 1);
  EXPECT_NEAR(planes.cr, 232.2, 1);
  const Planes unseen = planesOf({hidden, hidden, hidden, hidden});
  EXPECT_GT(unseen.cb, 200);
}

/// The luminance that a pixel shows with this luma and the shared chroma.
double shown(double luma, const Planes& planes) {
  return test::shownLuminance(luma, planes.cb - 128, planes.cr - 128);
}

TEST(YCbCrRows, makesUpInLumaForTheLuminanceThatSharedChromaChanges) {
  const std::array<Pixel, 2> pair{Pixel{170, 110, 90, 255}, Pixel{90, 110, 160, 255}};
  const Planes planes = planesOf({pair[0], pair[1], pair[0], pair[1]});
  for (const std::size_t i : {0, 1}) {
    const Pixel& pixel = pair[i];
    const double source = test::luminanceOf(pixel[0], pixel[1], pixel[2]);
    const double plain = 0.299 * pixel[0] + 0.587 * pixel[1] + 0.114 * pixel[2];
    EXPECT_LT(std::abs(shown(planes.luma[i], planes) - source),
              0.6 * std::abs(shown(plain, planes) - source))
        << i;
  }
}

TEST(YCbCrRows, leavesTheLumaOfBlackBesideSaturatedColors) {
  const Pixel black{0, 0, 0, 255};
  const Planes planes = planesOf({Pixel{255, 0, 0, 255}, black, black, black});
  for (const std::size_t i : {1, 2, 3}) EXPECT_EQ(planes.luma[i], 0) << i;
}

TEST(YCbCrRows, takesALastColumnAndRowWithoutPartners) {
  const Bytes row{10, 10, 10, 255, 20, 20, 20, 255, red[0], red[1], red[2], 255};
  std::array<std::uint8_t, 3> luma{};
  std::array<std::uint8_t, 2> cb{};
  std::array<std::uint8_t, 2> cr{};
  YCbCrRows::writeColor(row.data(), row.data(), 3,
                        {luma.data(), luma.data(), cb.data(), cr.data()});
  EXPECT_EQ(luma[0], 10);
  EXPECT_EQ(luma[1], 20);
  EXPECT_NEAR(luma[2], 83.9, 0.8);
  EXPECT_NEAR(cr[1], 232.2, 0.5);
}

TEST(YCbCrRows, copiesAlpha) {
  const Bytes row{1, 2, 3, 4, 5, 6, 7, 8};
  std::array<std::uint8_t, 2> alpha{};
  YCbCrRows::writeAlpha(row.data(), 2, alpha.data());
  EXPECT_EQ(alpha, (std::array<std::uint8_t, 2>{4, 8}));
}

}  // namespace
}  // namespace orvane
