#include "codecs/QualityTable.h"

#include <gtest/gtest.h>

#include <cmath>

namespace orvane {
namespace {

constexpr QualityPoint line[]{{0, 50}, {0.5, 30}, {1, 20}};

TEST(QualityTable, liesOnTheLineBetweenItsPoints) {
  EXPECT_DOUBLE_EQ(settingAt(line, 0), 50);
  EXPECT_DOUBLE_EQ(settingAt(line, 0.25), 40);
  EXPECT_DOUBLE_EQ(settingAt(line, 0.5), 30);
  EXPECT_DOUBLE_EQ(settingAt(line, 0.75), 25);
  EXPECT_DOUBLE_EQ(settingAt(line, 1), 20);
}

TEST(QualityTable, takesQualitiesOutsideForTheNearest) {
  EXPECT_DOUBLE_EQ(settingAt(line, -1), 50);
  EXPECT_DOUBLE_EQ(settingAt(line, 2), 20);
  EXPECT_DOUBLE_EQ(settingAt(line, std::nan("")), 50);
}

class EveryQualityTable : public testing::TestWithParam<std::span<const QualityPoint> (*)()> {};

TEST_P(EveryQualityTable, goesFromZeroToOneAndGetsFinerAllTheWay) {
  const auto table = GetParam()();
  ASSERT_GE(table.size(), 2u);
  EXPECT_EQ(table.front().quality, 0);
  EXPECT_EQ(table.back().quality, 1);
  for (std::size_t i = 1; i < table.size(); ++i) {
    EXPECT_GT(table[i].quality, table[i - 1].quality);
    EXPECT_LT(table[i].setting, table[i - 1].setting);
  }
}

INSTANTIATE_TEST_SUITE_P(QualityTables, EveryQualityTable,
                         testing::Values(QualityTables::jpegStepScale, QualityTables::avifQuantizer,
                                         QualityTables::avifQuantizerTunedForImages,
                                         QualityTables::heicRateFactor));

}  // namespace
}  // namespace orvane
