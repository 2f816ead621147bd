#include "codecs/avif/AVIFSettings.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

using AVIFSettings::Content;
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

TEST(AVIFSettings, cutsLargePicturesIntoTilesThatSeveralThreadsCanShare) {
  const auto tiles = [](std::uint32_t width, std::uint32_t height) {
    const AVIFSettings::Tiles cut = AVIFSettings::tiles(width, height);
    return std::pair(cut.columnsLog2, cut.rowsLog2);
  };
  EXPECT_EQ(tiles(1, 1), std::pair(0, 0));
  EXPECT_EQ(tiles(2000, 2000), std::pair(0, 0));
  EXPECT_EQ(tiles(2001, 2000), std::pair(1, 0));
  EXPECT_EQ(tiles(2000, 2001), std::pair(0, 1));
  EXPECT_EQ(tiles(6000, 4000), std::pair(2, 1));
  EXPECT_EQ(tiles(4000, 6000), std::pair(1, 2));
  EXPECT_EQ(tiles(65536, 65536), std::pair(5, 6));
}

/// A picture of that class, flatness and share of edges.
AVIFSettings::Content contentOf(ContentClass contentClass, double flat, double edges) {
  return AVIFSettings::contentOf(
      {.contentClass = contentClass, .flatFraction = flat, .edgeFraction = edges});
}

TEST(AVIFSettings, takeFlatPicturesWithManyEdgesForScreens) {
  using enum ContentClass;
  EXPECT_EQ(contentOf(flatGraphic, 0.93, 0.0201), Content::screen);     // a terminal
  EXPECT_EQ(contentOf(screenContent, 0.79, 0.0275), Content::screen);   // messages, with a picture
  EXPECT_EQ(contentOf(flatGraphic, 0.999, 0.0005), Content::natural);   // a plain ground
  EXPECT_EQ(contentOf(screenContent, 0.66, 0.0153), Content::natural);  // soft drawing
  EXPECT_EQ(contentOf(photo, 0.03, 0.35), Content::natural);
  EXPECT_EQ(contentOf(illustration, 0.4, 0.005), Content::natural);
}

TEST(AVIFSettings, wantMoreThanTheLeastOfEdges) {
  using enum ContentClass;
  EXPECT_EQ(contentOf(flatGraphic, 1, 0.01), Content::natural);
  EXPECT_EQ(contentOf(flatGraphic, 1, 0.011), Content::screen);
  EXPECT_EQ(contentOf(screenContent, 0.5, 0.05), Content::natural);
  EXPECT_EQ(contentOf(screenContent, 0.5, 0.051), Content::screen);
}

}  // namespace
}  // namespace orvane
