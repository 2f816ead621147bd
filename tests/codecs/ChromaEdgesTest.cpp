#include "codecs/ChromaEdges.h"

#include <gtest/gtest.h>

#include "support/TestImages.h"

namespace orvane {
namespace {

using test::Pixel;

double shareOf(const Image& image) {
  OpaqueRows rows(image);
  return chromaEdgeShare(rows);
}

/// Vertical lines of one pixel on white, every `distance` pixels.
Image lines(std::size_t width, std::size_t height, std::size_t distance, const Pixel& color) {
  return test::drawImage(width, height, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
                         [&](std::size_t x, std::size_t) {
                           return x % distance == 0 ? color : Pixel{255, 255, 255, 255};
                         });
}

constexpr Pixel red{220, 0, 0, 255};
constexpr Pixel black{0, 0, 0, 255};

TEST(ChromaEdges, areNoneInPhotographsAndBlackText) {
  EXPECT_EQ(shareOf(test::gradientImage(300, 200)), 0);
  EXPECT_LT(shareOf(test::noisyImage(300, 200)), 0.003);
  EXPECT_EQ(shareOf(lines(200, 100, 4, black)), 0);
}

TEST(ChromaEdges, areCountedByTheBlock) {
  EXPECT_EQ(shareOf(lines(200, 100, 2, red)), 1);
  EXPECT_EQ(shareOf(lines(200, 100, 4, red)), 0.5);
  EXPECT_EQ(shareOf(lines(200, 100, 20, red)), 0.1);
}

TEST(ChromaEdges, areSeenInEitherDirection) {
  const Image image =
      test::drawImage(40, 40, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
                      [](std::size_t, std::size_t y) {
                        return y % 2 == 0 ? Pixel{0, 0, 255, 255} : Pixel{255, 255, 255, 255};
                      });
  EXPECT_EQ(shareOf(image), 1);
}

TEST(ChromaEdges, areEstimatedOnAGridInLargePictures) {
  // Every power of two between the lines is one that a grid might be in step with.
  for (const std::size_t distance : {4u, 8u, 16u}) {
    const double expected = 2.0 / static_cast<double>(distance);
    EXPECT_NEAR(shareOf(lines(2000, 1400, distance, red)), expected, expected / 10) << distance;
  }
}

TEST(ChromaEdges, areNoneWhereThereAreNoBlocks) {
  EXPECT_EQ(shareOf(test::gradientImage(1, 1)), 0);
  EXPECT_EQ(shareOf(test::gradientImage(1, 50)), 0);
}

}  // namespace
}  // namespace orvane
