#include "codecs/avif/AVIFSettings.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

using AVIFSettings::Tuning;

TEST(AVIFSettings, spendMoreBitsTheHigherTheQuality) {
  for (const Tuning tuning : {Tuning::imageQuality, Tuning::structuralSimilarity}) {
    int previous = 64;
    for (int percent = 0; percent <= 100; ++percent) {
      const int quantizer = AVIFSettings::colorQuantizer(percent / 100.0, tuning);
      EXPECT_LE(quantizer, previous) << percent;
      previous = quantizer;
    }
  }
}

TEST(AVIFSettings, stayWithinTheLossyQuantizers) {
  for (const Tuning tuning : {Tuning::imageQuality, Tuning::structuralSimilarity}) {
    EXPECT_LE(AVIFSettings::colorQuantizer(0, tuning), 63);
    EXPECT_EQ(AVIFSettings::colorQuantizer(1, tuning), 1);
  }
}

}  // namespace
}  // namespace orvane
