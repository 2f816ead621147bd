#include "codecs/jpeg/DecodedChroma.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace orvane {
namespace {

Block filled(float sample) {
  Block block;
  block.fill(sample);
  return block;
}

DecodedChroma roomy(std::size_t width, std::size_t height) {
  DecodedChroma chroma(width, height);
  for (const std::size_t component : {0u, 1u}) chroma.allocate(component);
  return chroma;
}

std::vector<int> doubled(const DecodedChroma& chroma, std::size_t width, std::size_t y) {
  std::vector<std::uint8_t> row(width);
  chroma.doubleRow(0, y, row.data());
  return {row.begin(), row.end()};
}

TEST(DecodedChroma, roundsAndClipsAsDecodersDo) {
  DecodedChroma chroma = roomy(8, 8);
  Block block = filled(0);
  block[0] = -300, block[1] = 300, block[2] = 1.6F, block[3] = -1.6F;
  chroma.store(0, 0, 0, block);
  const std::uint8_t* const row = chroma.rows(0)[0];
  EXPECT_EQ(std::vector<int>(row, row + 5), (std::vector<int>{0, 255, 130, 126, 128}));
}

TEST(DecodedChroma, doublesWithWeightsOfThreeToOne) {
  DecodedChroma chroma = roomy(3, 8);
  Block block;
  for (std::size_t i = 0; i < 64; ++i) block[i] = static_cast<float>(i % 8 * 16);
  chroma.store(0, 0, 0, block);
  EXPECT_EQ(doubled(chroma, 6, 0), (std::vector<int>{128, 132, 140, 148, 156, 160}));
}

TEST(DecodedChroma, looksIntoTheStripsAboveAndBelow) {
  DecodedChroma chroma = roomy(8, 20);
  for (const std::size_t strip : {0u, 1u, 2u}) {
    chroma.store(0, strip, 0, filled(static_cast<float>(strip) * 64 - 64));
  }
  EXPECT_EQ(doubled(chroma, 16, 0).front(), 64);
  EXPECT_EQ(doubled(chroma, 16, 15).front(), 64 + 16);
  EXPECT_EQ(doubled(chroma, 16, 16).front(), 128 - 16);
  EXPECT_EQ(doubled(chroma, 16, 39).front(), 192);
}

TEST(DecodedChroma, keepsEveryStripOfBothComponents) {
  DecodedChroma chroma = roomy(8, 32);
  for (const std::size_t strip : {0u, 1u, 2u, 3u}) {
    chroma.store(0, strip, 0, filled(static_cast<float>(strip) - 64));
    chroma.store(1, strip, 0, filled(static_cast<float>(strip)));
  }
  EXPECT_EQ(chroma.rows(0)[1][0], 128);
  EXPECT_EQ(chroma.rows(8)[0][0], 65);
  EXPECT_EQ(chroma.rows(31)[1][7], 131);
}

}  // namespace
}  // namespace orvane
