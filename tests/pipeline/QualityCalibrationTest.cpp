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

TEST(QualityCalibration, meetsItsAnchors) {
  EXPECT_DOUBLE_EQ(calibratedQuality(40, ImageFormat::webp), 78);
  EXPECT_DOUBLE_EQ(calibratedQuality(50, ImageFormat::heic), 54);
  EXPECT_DOUBLE_EQ(calibratedQuality(60, ImageFormat::avif), 77);
  EXPECT_DOUBLE_EQ(calibratedQuality(75, ImageFormat::heic), 78);
  EXPECT_DOUBLE_EQ(calibratedQuality(80, ImageFormat::avif), 89);
  EXPECT_DOUBLE_EQ(calibratedQuality(85, ImageFormat::webp), 98);
  for (double quality = 30; quality <= 90; quality += 5) {
    EXPECT_DOUBLE_EQ(calibratedQuality(quality, ImageFormat::jpeg), quality);
  }
}

TEST(QualityCalibration, liesOnALineBetweenTwoAnchors) {
  EXPECT_DOUBLE_EQ(calibratedQuality(62, ImageFormat::webp), 89.8);
  EXPECT_DOUBLE_EQ(calibratedQuality(72.5, ImageFormat::avif), 86.5);
  EXPECT_DOUBLE_EQ(calibratedQuality(87.5, ImageFormat::heic), 88.5);
}

TEST(QualityCalibration, startsAtZeroBelowTheFirstAnchor) {
  EXPECT_EQ(calibratedQuality(0, ImageFormat::webp), 0);
  EXPECT_DOUBLE_EQ(calibratedQuality(15, ImageFormat::webp), 28);
  EXPECT_DOUBLE_EQ(calibratedQuality(30, ImageFormat::avif), 48);
}

TEST(QualityCalibration, reachesAHundredTogetherAboveTheLastAnchor) {
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
