#include "pipeline/EncodingAttempts.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

namespace orvane {
namespace {

using EncodingAttempts::encodeSmallest;

struct Attempt {
  EncodingPlan plan;
  PNGForm pngForm;
};

/// Gives outputs of the given sizes, filled with the number of the attempt, and notes what was
/// asked.
struct Recorder {
  std::vector<std::size_t> sizes;
  std::vector<Attempt> attempts;

  Bytes run(const EncodingPlan& plan) {
    return encodeSmallest(plan, [this](const EncodingPlan& attempt, PNGForm pngForm) {
      attempts.push_back({attempt, pngForm});
      const std::size_t size = sizes.at(attempts.size() - 1);
      return Bytes(size, static_cast<std::uint8_t>(attempts.size()));
    });
  }
};

EncodingPlan plan() {
  return {.mode = EncodingPlan::Lossy{70},
          .effort = EncodingPlan::Effort::thorough,
          .quality = 70,
          .ditheringLevel = 0.7F};
}

TEST(EncodingAttempts, makesOneAttemptOfASinglePass) {
  EncodingPlan single = plan();
  single.singlePass = true;
  Recorder recorder{.sizes = {5}};
  EXPECT_EQ(recorder.run(single), Bytes(5, 1));
  ASSERT_EQ(recorder.attempts.size(), 1u);
  EXPECT_EQ(recorder.attempts[0].plan, single);
  EXPECT_EQ(recorder.attempts[0].pngForm, PNGForm::palette);
}

TEST(EncodingAttempts, changesNothingButTheModeForTheSecond) {
  EncodingPlan candidate = plan();
  candidate.losslessCandidate = true;
  Recorder recorder{.sizes = {5, 4}};
  recorder.run(candidate);
  EncodingPlan expected = candidate;
  expected.mode = EncodingPlan::Lossless{};
  EXPECT_EQ(recorder.attempts.at(1).plan, expected);
  EXPECT_EQ(recorder.attempts.at(1).pngForm, PNGForm::truecolor);
}

TEST(EncodingAttempts, triesLossyAtTheLosslessQualityAfterALosslessFirst) {
  EncodingPlan lossless = plan();
  lossless.mode = EncodingPlan::Lossless{};
  lossless.losslessQuality = 88;
  lossless.preferLossless = true;
  Recorder recorder{.sizes = {5, 4}};
  recorder.run(lossless);
  EXPECT_EQ(recorder.attempts.at(0).pngForm, PNGForm::truecolor);
  EXPECT_EQ(recorder.attempts.at(1).plan.mode, EncodingPlan::Mode(EncodingPlan::Lossy{88}));
  EXPECT_EQ(recorder.attempts.at(1).pngForm, PNGForm::palette);
}

TEST(EncodingAttempts, keepsTheSmallerOutputAndTheFirstOnEqualSizes) {
  EXPECT_EQ((Recorder{.sizes = {5, 4}}).run(plan()), Bytes(4, 2));
  EXPECT_EQ((Recorder{.sizes = {4, 5}}).run(plan()), Bytes(4, 1));
  EXPECT_EQ((Recorder{.sizes = {4, 4}}).run(plan()), Bytes(4, 1));
}

TEST(EncodingAttempts, keepsTheFirstWhenTheSecondFails) {
  int attempts = 0;
  const Bytes output = encodeSmallest(plan(), [&](const EncodingPlan&, PNGForm) {
    if (++attempts == 2) throw std::runtime_error("the second");
    return Bytes(9, 1);
  });
  EXPECT_EQ(output, Bytes(9, 1));
  EXPECT_EQ(attempts, 2);
}

TEST(EncodingAttempts, failsWhenTheFirstFails) {
  int attempts = 0;
  EXPECT_THROW(encodeSmallest(plan(),
                              [&](const EncodingPlan&, PNGForm) -> Bytes {
                                ++attempts;
                                throw std::runtime_error("the first");
                              }),
               std::runtime_error);
  EXPECT_EQ(attempts, 1);
}

}  // namespace
}  // namespace orvane
