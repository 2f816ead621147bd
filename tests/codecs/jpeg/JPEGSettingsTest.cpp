#include "codecs/jpeg/JPEGSettings.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace orvane {
namespace {

constexpr double photograph = 0;
constexpr double coloredText = 0.05;

TEST(JPEGSettings, quantisesFinerForEveryHigherQuality) {
  for (const double chromaEdges : {photograph, coloredText}) {
    auto previous = JPEGSettings::forPicture(0, chromaEdges);
    for (int percent = 2; percent <= 100; ++percent) {
      const auto settings = JPEGSettings::forPicture(percent / 100.0, chromaEdges);
      const bool sameChroma = settings.chroma == previous.chroma;
      for (std::size_t i = 0; i < 64; ++i) {
        EXPECT_LE(settings.lumaSteps[i], previous.lumaSteps[i]) << percent;
        if (sameChroma) {
          EXPECT_LE(settings.chromaSteps[i], previous.chromaSteps[i]) << percent;
        }
      }
      previous = settings;
    }
  }
}

TEST(JPEGSettings, keepsEveryStepWithinOneByte) {
  const auto coarsest = JPEGSettings::forPicture(0, photograph);
  EXPECT_EQ(std::ranges::max(coarsest.lumaSteps), 255u);
  const auto finest = JPEGSettings::forPicture(1, photograph);
  EXPECT_EQ(std::ranges::min(finest.lumaSteps), 1u);
  EXPECT_LE(std::ranges::max(finest.lumaSteps), 8u);
}

TEST(JPEGSettings, halvesChromaOnlyBelowHighQualityAndWithoutEdges) {
  using Chroma = JPEGSettings::Chroma;
  EXPECT_EQ(JPEGSettings::forPicture(0.75, photograph).chroma, Chroma::halved);
  EXPECT_EQ(JPEGSettings::forPicture(0.92, photograph).chroma, Chroma::halved);
  EXPECT_EQ(JPEGSettings::forPicture(0.93, photograph).chroma, Chroma::full);
  EXPECT_EQ(JPEGSettings::forPicture(0.30, coloredText).chroma, Chroma::full);
}

}  // namespace
}  // namespace orvane
