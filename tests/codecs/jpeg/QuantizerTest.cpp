#include "codecs/jpeg/Quantizer.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace orvane {
namespace {

constexpr ErrorVisibility hidden{.fine = 0.2F, .coarse = 0.1F};
constexpr ErrorVisibility plain{.fine = 1.9F, .coarse = 3.6F};
constexpr ErrorVisibility glaring{.fine = 1e6F, .coarse = 1e6F};

constexpr std::size_t lastOfRow = 7;

using Levels = std::array<std::int16_t, 64>;

JPEGSettings settings() { return JPEGSettings::forPicture(0.75, 0); }

/// The level of one coefficient, given in steps.
int levelOf(std::size_t index, float value, ErrorVisibility visibility) {
  Block block{};
  block[index] = value * static_cast<float>(settings().lumaSteps[index]);
  Levels levels;
  Quantizer::forLuma(settings()).quantize(block, visibility, levels.data());
  for (std::size_t i = 0; i < 64; ++i) {
    if (i != index) {
      EXPECT_EQ(levels[i], 0) << i;
    }
  }
  return levels[index];
}

TEST(Quantizer, roundsWhereErrorsAreSeen) {
  for (const float value : {0.2F, 0.49F, 0.51F, 1.49F, 1.51F, 2.51F, 3.51F, 7.6F}) {
    EXPECT_EQ(levelOf(lastOfRow, value, glaring), std::lround(value)) << value;
    EXPECT_EQ(levelOf(lastOfRow, -value, glaring), -std::lround(value)) << value;
  }
}

TEST(Quantizer, lowersOnesAndOtherPowersOfTwoWhereErrorsAreHidden) {
  EXPECT_EQ(levelOf(lastOfRow, 0.51F, hidden), 0);
  EXPECT_EQ(levelOf(lastOfRow, -0.51F, hidden), 0);
  EXPECT_EQ(levelOf(lastOfRow, 1.51F, hidden), 1);
  EXPECT_EQ(levelOf(lastOfRow, -3.51F, hidden), -3);
  EXPECT_EQ(levelOf(lastOfRow, 2.51F, hidden), 3);
  EXPECT_EQ(levelOf(lastOfRow, 1.3F, hidden), 1);
}

TEST(Quantizer, lowersMoreTheLessErrorsAreSeen) {
  const auto highestZero = [](ErrorVisibility visibility) {
    float value = 0.5F;
    while (levelOf(lastOfRow, value, visibility) == 0) value += 0.01F;
    return value;
  };
  EXPECT_GT(highestZero(hidden), highestZero(plain));
  EXPECT_GE(highestZero(plain), highestZero(glaring));
}

/// All steps are twice the scale.
JPEGSettings evenSettings() {
  JPEGSettings result{.lumaScale = 5, .chromaScale = 8, .chroma = JPEGSettings::Chroma::halved};
  result.lumaSteps.fill(10);
  result.chromaSteps.fill(16);
  return result;
}

/// The cost, in bits, of a squared error of one step of which the eye sees a share.
double costOf(double seenShare, double lambda) { return 2 * 2 * 2 * seenShare / lambda; }

// Sensitivities to errors of the lowest frequency.
const double fineSensitivity = 1 / std::pow(1 + 2.1 * std::pow(1.0 / 7, 1.5), 2);
const double coarseSensitivity = 0.7 * std::exp(-1 / 1.69);

/// Expects that lowering a 1 saves 4.5 bits, and lowering a 2 saves 3.
void expectThresholds(const Quantizer& quantizer, float step, ErrorVisibility visibility,
                      double cost) {
  const auto level = [&](double value) {
    Block block{};
    block[1] = static_cast<float>(value) * step;
    Levels levels;
    quantizer.quantize(block, visibility, levels.data());
    return int{levels[1]};
  };
  const double one = 0.5 + 4.5 / cost;
  const double two = 1.5 + 3 / cost;
  EXPECT_EQ(level(one - 0.01), 0);
  EXPECT_EQ(level(one + 0.01), 1);
  EXPECT_EQ(level(two - 0.01), 1);
  EXPECT_EQ(level(two + 0.01), 2);
}

TEST(Quantizer, weighsErrorsOfLumaAgainstBits) {
  const Quantizer quantizer = Quantizer::forLuma(evenSettings());
  expectThresholds(quantizer, 10, {.fine = 0, .coarse = 1}, costOf(coarseSensitivity, 0.18));
  expectThresholds(quantizer, 10, {.fine = 0.5F, .coarse = 0}, costOf(fineSensitivity * 0.5, 0.18));
}

TEST(Quantizer, weighsErrorsOfChromaAgainstBits) {
  const Quantizer quantizer = Quantizer::forChroma(evenSettings());
  expectThresholds(quantizer, 16, {.fine = 0.1F, .coarse = 9},
                   costOf(fineSensitivity * 0.1, 0.047));
}

TEST(Quantizer, roundsMeans) {
  for (const float value : {0.51F, -0.51F, 1.51F, -3.51F}) {
    EXPECT_EQ(levelOf(0, value, hidden), std::lround(value)) << value;
  }
}

TEST(Quantizer, staysInTheRangeOfTheStandard) {
  EXPECT_EQ(levelOf(lastOfRow, 5000, plain), 1023);
  EXPECT_EQ(levelOf(lastOfRow, -5000, plain), -1023);
  EXPECT_EQ(levelOf(0, 5000, plain), 1023);
  EXPECT_EQ(levelOf(0, -5000, plain), -1024);
}

TEST(Quantizer, restoresMultiplesOfTheSteps) {
  Levels levels{};
  levels[0] = -3;
  levels[63] = 2;
  const Block block = Quantizer::forChroma(settings()).restore(levels.data());
  EXPECT_EQ(block[0], -3 * static_cast<float>(settings().chromaSteps[0]));
  EXPECT_EQ(block[63], 2 * static_cast<float>(settings().chromaSteps[63]));
  EXPECT_EQ(block[1], 0);
}

}  // namespace
}  // namespace orvane
