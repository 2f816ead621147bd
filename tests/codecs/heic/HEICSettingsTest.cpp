#include "codecs/heic/HEICSettings.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

TEST(HEICSettings, spendMoreBitsOnEveryHundredthOfQuality) {
  int previous = 5100;
  for (int percent = 0; percent <= 100; ++percent) {
    const int rateFactor = HEICSettings::rateFactorInHundredths(percent / 100.0);
    EXPECT_LT(rateFactor, previous) << percent;
    previous = rateFactor;
  }
  EXPECT_GT(previous, 0) << "lossy at the highest quality";
}

X265Library::Param photograph(HEICSettings::Size size, double rateFactor = 23) {
  return HEICSettings::forColor(size, rateFactor, true);
}

TEST(HEICSettings, codeColoursByRateFactorAndAlphaByAQuantizer) {
  const X265Library::Param color = photograph({640, 480}, 23.7);
  EXPECT_EQ(color->rc.rateControlMode, X265_RC_CRF);
  EXPECT_EQ(color->rc.rfConstant, 23);
  EXPECT_EQ(color->internalCsp, X265_CSP_I420);
  EXPECT_EQ(color->sourceWidth, 640);
  EXPECT_EQ(color->sourceHeight, 480);
  const X265Library::Param alpha = HEICSettings::forAlpha({640, 480});
  EXPECT_EQ(alpha->rc.rateControlMode, X265_RC_CQP);
  EXPECT_EQ(alpha->internalCsp, X265_CSP_I400);
}

TEST(HEICSettings, letThreadsShareTheRowsOfLargePictures) {
  EXPECT_EQ(photograph({1000, 1000})->bEnableWavefront, 1);
  EXPECT_EQ(HEICSettings::forAlpha({1000, 1000})->bEnableWavefront, 1);
  EXPECT_EQ(photograph({1000, 998})->bEnableWavefront, 0);
}

TEST(HEICSettings, startNoThreadsBesideTheOneThatCodes) {
  const X265Library::Param param = photograph({640, 480});
  EXPECT_EQ(param->frameNumThreads, 1);
  EXPECT_EQ(param->bEnableWavefront, 0);
  EXPECT_STREQ(param->numaPools, "none");
}

TEST(HEICSettings, spendLessTimeOnPhotographs) {
  const X265Library::Param drawing = HEICSettings::forColor({640, 480}, 23, false);
  EXPECT_LT(photograph({640, 480})->rdLevel, drawing->rdLevel);
}

}  // namespace
}  // namespace orvane
