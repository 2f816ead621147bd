#include "pipeline/QualityCalibration.h"

#include <gtest/gtest.h>

#include <limits>

namespace orvane {
namespace {

using QualityCalibration::calibratedQuality;
using QualityCalibration::codecQuality;

TEST(QualityCalibration, keepsThePerceptualQualityForEveryFormat) {
  for (const ImageFormat format : ImageFormat::allCases) {
    for (const double quality : {0.0, 1.0, 29.9, 30.0, 62.0, 72.5, 90.0, 97.3, 100.0}) {
      EXPECT_EQ(codecQuality(quality, format), quality) << format.rawValue();
    }
  }
}

TEST(QualityCalibration, staysWithinZeroAndAHundred) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  for (const ImageFormat format : ImageFormat::allCases) {
    EXPECT_EQ(codecQuality(150, format), 100);
    EXPECT_EQ(codecQuality(infinity, format), 100);
    EXPECT_EQ(codecQuality(-3, format), 0);
    EXPECT_EQ(codecQuality(-infinity, format), 0);
    EXPECT_EQ(codecQuality(std::numeric_limits<double>::quiet_NaN(), format), 0);
  }
}

TEST(QualityCalibration, meetsEveryAnchorOfEveryFormat) {
  struct Row {
    double perceptual, jpeg, heic, avif, webp;
  };
  for (const Row& row :
       {Row{30, 30, 34, 48, 56}, Row{40, 40, 43, 58, 78}, Row{50, 50, 54, 68, 84},
        Row{60, 60, 64, 77, 89}, Row{70, 70, 72, 85, 93}, Row{75, 75, 78, 88, 94},
        Row{80, 80, 83, 89, 96}, Row{85, 85, 87, 92, 98}, Row{90, 90, 90, 93, 99}}) {
    EXPECT_DOUBLE_EQ(calibratedQuality(row.perceptual, ImageFormat::jpeg), row.jpeg);
    EXPECT_DOUBLE_EQ(calibratedQuality(row.perceptual, ImageFormat::heic), row.heic);
    EXPECT_DOUBLE_EQ(calibratedQuality(row.perceptual, ImageFormat::avif), row.avif);
    EXPECT_DOUBLE_EQ(calibratedQuality(row.perceptual, ImageFormat::webp), row.webp);
  }
}

TEST(QualityCalibration, liesOnALineBetweenTwoAnchors) {
  EXPECT_DOUBLE_EQ(calibratedQuality(62, ImageFormat::webp), 89.8);
  EXPECT_DOUBLE_EQ(calibratedQuality(72.5, ImageFormat::avif), 86.5);
  EXPECT_DOUBLE_EQ(calibratedQuality(87.5, ImageFormat::heic), 88.5);
}

TEST(QualityCalibration, startsAtZeroBelowTheFirstAnchor) {
  for (const ImageFormat format : ImageFormat::allCases) {
    EXPECT_EQ(calibratedQuality(0, format), 0) << format.rawValue();
  }
  EXPECT_DOUBLE_EQ(calibratedQuality(15, ImageFormat::jpeg), 15);
  EXPECT_DOUBLE_EQ(calibratedQuality(15, ImageFormat::heic), 17);
  EXPECT_DOUBLE_EQ(calibratedQuality(15, ImageFormat::avif), 24);
  EXPECT_DOUBLE_EQ(calibratedQuality(15, ImageFormat::webp), 28);
}

TEST(QualityCalibration, reachesAHundredTogetherAboveTheLastAnchor) {
  EXPECT_DOUBLE_EQ(calibratedQuality(95, ImageFormat::jpeg), 95);
  EXPECT_DOUBLE_EQ(calibratedQuality(95, ImageFormat::heic), 95);
  EXPECT_DOUBLE_EQ(calibratedQuality(95, ImageFormat::avif), 96.5);
  EXPECT_DOUBLE_EQ(calibratedQuality(95, ImageFormat::webp), 99.5);
  for (const ImageFormat format : ImageFormat::allCases) {
    EXPECT_DOUBLE_EQ(calibratedQuality(100, format), 100) << format.rawValue();
  }
}

TEST(QualityCalibration, hasNoTableForPNGAndJPEGXL) {
  EXPECT_EQ(calibratedQuality(62, ImageFormat::png), 62);
  EXPECT_EQ(calibratedQuality(62, ImageFormat::jxl), 62);
}

}  // namespace
}  // namespace orvane
