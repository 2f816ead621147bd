#include "codecs/jpeg/LumaBlock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace orvane {
namespace {

constexpr ErrorVisibility plain{.fine = 1.9F, .coarse = 3.6F};

Quantizer quantizer() { return Quantizer::forLuma(JPEGSettings::forPicture(0.5, 0)); }

using Levels = std::array<std::int16_t, 64>;

/// Levels of a transform and nothing else.
Levels plainLevels(Block block) {
  Levels levels;
  transformForward(block);
  quantizer().quantize(block, plain, levels.data());
  return levels;
}

Levels levelsOf(const Block& block) {
  Levels levels;
  codeLumaBlock(block, plain, quantizer(), levels.data());
  return levels;
}

/// The squared error that a decoder shows, which clips.
double errorOf(const Block& block, const Levels& levels) {
  Block decoded = quantizer().restore(levels.data());
  transformBack(decoded);
  double sum = 0;
  for (std::size_t i = 0; i < 64; ++i) {
    sum += std::pow(std::clamp(decoded[i], -128.0F, 127.0F) - block[i], 2);
  }
  return sum;
}

/// A stroke of `ink` across `paper`.
Block stroke(float ink, float paper) {
  Block block;
  for (std::size_t i = 0; i < 64; ++i) block[i] = (i % 8 + i / 8) % 8 < 2 ? ink : paper;
  return block;
}

TEST(LumaBlock, showsTextOnWhiteAndBlackBetter) {
  for (const Block& block : {stroke(-60, 127), stroke(60, -128), stroke(-128, 127)}) {
    EXPECT_LT(errorOf(block, levelsOf(block)), 0.7 * errorOf(block, plainLevels(block)));
  }
}

TEST(LumaBlock, codesOtherBlocksAsTheyAre) {
  for (const Block& block : {stroke(-60, 100), stroke(127, 127), stroke(-128, -128)}) {
    EXPECT_EQ(levelsOf(block), plainLevels(block));
  }
}

}  // namespace
}  // namespace orvane
