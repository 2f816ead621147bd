#include "codecs/QualityTable.h"

#include <gtest/gtest.h>

#include <cmath>
#include <span>
#include <tuple>

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

constexpr QualityPoint rising[]{{0, 20}, {0.5, 60}, {1, 100}};

TEST(QualityTable, findsTheQualityOfASetting) {
  EXPECT_DOUBLE_EQ(qualityAt(rising, 20), 0);
  EXPECT_DOUBLE_EQ(qualityAt(rising, 50), 0.375);
  EXPECT_DOUBLE_EQ(qualityAt(rising, 100), 1);
}

TEST(QualityTable, findsTheQualityOfASettingWhereSettingsFall) {
  EXPECT_DOUBLE_EQ(qualityAt(line, 50), 0);
  EXPECT_DOUBLE_EQ(qualityAt(line, 40), 0.25);
  EXPECT_DOUBLE_EQ(qualityAt(line, 25), 0.75);
  EXPECT_DOUBLE_EQ(qualityAt(line, 51), 0);
  EXPECT_DOUBLE_EQ(qualityAt(line, 19), 1);
  EXPECT_DOUBLE_EQ(qualityAt(line, std::nan("")), 0);
}

TEST(QualityTable, takesSettingsOutsideForTheNearest) {
  EXPECT_DOUBLE_EQ(qualityAt(rising, -300), 0);
  EXPECT_DOUBLE_EQ(qualityAt(rising, 101), 1);
  EXPECT_DOUBLE_EQ(qualityAt(rising, std::nan("")), 0);
}

using Table = std::span<const QualityPoint> (*)();

class EveryQualityTable : public testing::TestWithParam<std::tuple<Table, bool>> {};

TEST_P(EveryQualityTable, goesFromZeroToOneAndOneWayOnly) {
  const auto& [makeTable, rises] = GetParam();
  const auto table = makeTable();
  ASSERT_GE(table.size(), 2u);
  EXPECT_EQ(table.front().quality, 0);
  EXPECT_EQ(table.back().quality, 1);
  for (std::size_t i = 1; i < table.size(); ++i) {
    EXPECT_GT(table[i].quality, table[i - 1].quality);
    const double rise = table[i].setting - table[i - 1].setting;
    EXPECT_GT(rises ? rise : -rise, 0);
  }
}

INSTANTIATE_TEST_SUITE_P(
    CodecSettings, EveryQualityTable,
    testing::Combine(testing::Values(QualityTables::jpegStepScale, QualityTables::avifQuantizer,
                                     QualityTables::avifQuantizerTunedForImages,
                                     QualityTables::heicRateFactor),
                     testing::Values(false)));

INSTANTIATE_TEST_SUITE_P(
    SampleScores, EveryQualityTable,
    testing::Combine(testing::Values(QualityTables::jpegSampleScore, QualityTables::avifSampleScore,
                                     QualityTables::avifSampleScoreTunedForImages,
                                     QualityTables::heicSampleScore),
                     testing::Values(true)));

}  // namespace
}  // namespace orvane
