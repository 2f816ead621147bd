#include "codecs/jpeg/BlockTransform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <numbers>

namespace orvane {
namespace {

/// Numbers from -128 to 127 without a pattern.
Block scatteredBlock() {
  Block block;
  unsigned state = 1;
  for (float& sample : block) {
    state = state * 1'664'525U + 1'013'904'223U;
    sample = static_cast<float>(state >> 24) - 128;
  }
  return block;
}

/// ITU-T T.81, A.3.3, word by word.
double coefficient(const Block& samples, std::size_t u, std::size_t v) {
  const auto cosine = [](std::size_t position, std::size_t frequency) {
    return std::cos(static_cast<double>((2 * position + 1) * frequency) * std::numbers::pi / 16);
  };
  const auto scale = [](std::size_t frequency) { return frequency == 0 ? std::sqrt(0.5) : 1.0; };
  double sum = 0;
  for (std::size_t i = 0; i < 64; ++i) sum += samples[i] * cosine(i % 8, u) * cosine(i / 8, v);
  return scale(u) * scale(v) * sum / 4;
}

TEST(BlockTransform, isThatOfTheStandard) {
  const Block samples = scatteredBlock();
  Block block = samples;
  transformForward(block);
  for (std::size_t i = 0; i < 64; ++i) {
    EXPECT_NEAR(block[i], coefficient(samples, i % 8, i / 8), 1e-3) << i;
  }
}

TEST(BlockTransform, isUndone) {
  const Block samples = scatteredBlock();
  Block block = samples;
  transformForward(block);
  transformBack(block);
  for (std::size_t i = 0; i < 64; ++i) EXPECT_NEAR(block[i], samples[i], 1e-3) << i;
}

}  // namespace
}  // namespace orvane
