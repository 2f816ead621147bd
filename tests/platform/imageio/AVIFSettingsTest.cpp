#include "platform/imageio/AVIFSettings.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

using Tuning = AVIFSettings::Tuning;

constexpr std::size_t smallPicture = 1000;

TEST(AVIFSettings, spendsMoreBitsTheHigherTheQuality) {
  for (const Tuning tuning : {Tuning::imageQuality, Tuning::structuralSimilarity}) {
    int previous = 64;
    for (int percent = 0; percent <= 100; ++percent) {
      const int quantizer =
          AVIFSettings::forPicture(percent / 100.0, smallPicture, tuning).colorQuantizer;
      EXPECT_LE(quantizer, previous) << percent;
      previous = quantizer;
    }
  }
}

TEST(AVIFSettings, staysWithinTheLossyQuantizers) {
  for (const Tuning tuning : {Tuning::imageQuality, Tuning::structuralSimilarity}) {
    EXPECT_LE(AVIFSettings::forPicture(0, smallPicture, tuning).colorQuantizer, 63);
    EXPECT_EQ(AVIFSettings::forPicture(1, smallPicture, tuning).colorQuantizer, 1);
  }
}

TEST(AVIFSettings, takesLessTimeForEachPixelOfALargePicture) {
  const auto speed = [](std::size_t pixelCount) {
    return AVIFSettings::forPicture(0.75, pixelCount, Tuning::imageQuality).speed;
  };
  EXPECT_EQ(speed(1), speed(4'000'000));
  EXPECT_LT(speed(4'000'000), speed(4'000'001));
}

}  // namespace
}  // namespace orvane
