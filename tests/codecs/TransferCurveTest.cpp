#include "codecs/TransferCurve.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

TEST(TransferCurve, keepsNumbersThatAreTheSame) {
  const TransferCurve& curve = TransferCurve::sRGB();
  for (int i = 0; i < 256; ++i) {
    const auto number = static_cast<std::uint8_t>(i);
    EXPECT_NEAR(curve.meanOf({number, number, number, number}), i, 0.3) << i;
  }
}

TEST(TransferCurve, takesMeansInLinearLight) {
  const TransferCurve& curve = TransferCurve::sRGB();
  EXPECT_NEAR(curve.meanOf({0, 255, 0, 255}), 187.5, 0.3);
  EXPECT_NEAR(curve.meanOf({255, 0, 0, 0}), 136.9, 0.3);
  EXPECT_FLOAT_EQ(curve.meanOf({0, 0, 0, 0}), 0);
  EXPECT_FLOAT_EQ(curve.meanOf({255, 255, 255, 255}), 255);
}

TEST(TransferCurve, weightsNumbers) {
  const TransferCurve& curve = TransferCurve::sRGB();
  EXPECT_FLOAT_EQ(curve.meanOf({255, 255, 255, 255}, {255, 255, 255, 255}, 1020), 255);
  EXPECT_EQ(curve.meanOf({9, 50, 120, 200}, {7, 7, 7, 7}, 28), curve.meanOf({9, 50, 120, 200}));
  EXPECT_EQ(curve.meanOf({255, 0, 0, 0}, {0, 0, 0, 255}, 255), curve.meanOf({0, 0, 0, 0}));
  EXPECT_NEAR(curve.meanOf({255, 0, 0, 0}, {255, 255, 0, 0}, 510), 187.5, 0.3);
}

TEST(TransferCurve, getsSteeper) {
  const auto& slopes = TransferCurve::sRGB().slopes();
  for (std::size_t i = 1; i < slopes.size(); ++i) EXPECT_GE(slopes[i], slopes[i - 1]) << i;
  EXPECT_GT(slopes[0], 0);
  EXPECT_NEAR(slopes[255] / slopes[0], 2.4 / 1.055 * 12.92, 0.1);
}

}  // namespace
}  // namespace orvane
