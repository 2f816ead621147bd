#include "pipeline/EncodingStrategy.h"

#include <gtest/gtest.h>

#include <limits>

namespace orvane {
namespace {

using EncodingStrategy::plan;
using Lossless = EncodingPlan::Lossless;
using Lossy = EncodingPlan::Lossy;
using Mode = EncodingPlan::Mode;
using NearLossless = EncodingPlan::NearLossless;

constexpr std::array contentClasses{ContentClass::flatGraphic, ContentClass::screenContent,
                                    ContentClass::illustration, ContentClass::photo,
                                    ContentClass::detailedPhoto};
constexpr std::array nativeFormats{ImageFormat::jpeg, ImageFormat::heic, ImageFormat::avif};
constexpr std::array ownFormats{ImageFormat::webp, ImageFormat::jxl};

ImageCharacteristics picture(ContentClass contentClass, std::int64_t pixels = 10'000) {
  return {.width = pixels, .height = 1, .contentClass = contentClass, .noiseLevel = 7};
}

TEST(EncodingStrategy, takesFourPointsOffDetailedPhotos) {
  EXPECT_EQ(plan(picture(ContentClass::detailedPhoto), ImageFormat::jpeg, 80).quality, 76);
  EXPECT_EQ(plan(picture(ContentClass::detailedPhoto), ImageFormat::jpeg, 80).mode,
            Mode(Lossy{76}));
  EXPECT_EQ(plan(picture(ContentClass::photo), ImageFormat::jpeg, 80).quality, 80);
  EXPECT_EQ(plan(picture(ContentClass::detailedPhoto), ImageFormat::png, 100).quality, 96);
  EXPECT_EQ(plan(picture(ContentClass::detailedPhoto), ImageFormat::png, 104).quality, 100);
  EXPECT_TRUE(plan(picture(ContentClass::detailedPhoto), ImageFormat::png, 104).preferLossless);
}

TEST(EncodingStrategy, keepsTheQualityAtOneOrMore) {
  for (const ContentClass contentClass : contentClasses) {
    for (const double quality : {0.0, 0.99, -5.0, -std::numeric_limits<double>::infinity()}) {
      const EncodingPlan low = plan(picture(contentClass), ImageFormat::png, quality);
      EXPECT_EQ(low.quality, 1);
      EXPECT_EQ(low.mode, Mode(Lossy{1}));
      EXPECT_FALSE(low.preferLossless);
    }
  }
  EXPECT_EQ(plan(picture(ContentClass::detailedPhoto), ImageFormat::jpeg, 4.5).quality, 1);
}

TEST(EncodingStrategy, keepsTheQualityAtAHundredOrLess) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  for (const ContentClass contentClass : contentClasses) {
    for (const double quality : {104.0, 150.0, infinity, nan}) {
      const EncodingPlan high = plan(picture(contentClass), ImageFormat::png, quality);
      EXPECT_EQ(high.quality, 100);
      EXPECT_EQ(high.mode, Mode(Lossy{100}));
      EXPECT_TRUE(high.preferLossless);
    }
  }
}

TEST(EncodingStrategy, prefersLosslessFromNinetyFiveOn) {
  const auto prefers = [](ContentClass contentClass, double quality) {
    return plan(picture(contentClass), ImageFormat::png, quality).preferLossless;
  };
  EXPECT_TRUE(prefers(ContentClass::photo, 95));
  EXPECT_FALSE(prefers(ContentClass::photo, 94.9));
  EXPECT_TRUE(prefers(ContentClass::flatGraphic, 95));
  EXPECT_FALSE(prefers(ContentClass::flatGraphic, 94.9));
}

TEST(EncodingStrategy, prefersLosslessFromEightyFiveOnForPhotosOfVeryManyColors) {
  const auto prefers = [](ContentClass contentClass, double quality) {
    ImageCharacteristics colorful = picture(contentClass);
    colorful.uniqueColorsCapped = true;
    return plan(colorful, ImageFormat::png, quality).preferLossless;
  };
  EXPECT_TRUE(prefers(ContentClass::photo, 85));
  EXPECT_FALSE(prefers(ContentClass::photo, 84.9));
  EXPECT_TRUE(prefers(ContentClass::detailedPhoto, 89));
  EXPECT_FALSE(prefers(ContentClass::detailedPhoto, 88.9));
  EXPECT_FALSE(prefers(ContentClass::illustration, 94));
  EXPECT_FALSE(prefers(ContentClass::screenContent, 94));
}

TEST(EncodingStrategy, encodesNativeFormatsAndPNGLossyWhateverTheContent) {
  for (const ContentClass contentClass : contentClasses) {
    const double quality = contentClass == ContentClass::detailedPhoto ? 94 : 98;
    for (const ImageFormat format : nativeFormats) {
      EXPECT_EQ(plan(picture(contentClass), format, 98).mode, Mode(Lossy{quality}));
    }
    EXPECT_EQ(plan(picture(contentClass), ImageFormat::png, 98).mode, Mode(Lossy{quality}));
  }
}

TEST(EncodingStrategy, encodesFlatGraphicsLosslessAtEveryQuality) {
  for (const ImageFormat format : ownFormats) {
    for (const double quality : {1.0, 50.0, 90.0, 100.0}) {
      EXPECT_EQ(plan(picture(ContentClass::flatGraphic), format, quality).mode, Mode(Lossless{}));
    }
  }
}

TEST(EncodingStrategy, encodesFlatScreensLosslessFromNinetySevenOn) {
  ImageCharacteristics screen = picture(ContentClass::screenContent);
  screen.flatFraction = 0.6;
  for (const ImageFormat format : ownFormats) {
    EXPECT_EQ(plan(screen, format, 97).mode, Mode(Lossless{}));
  }
  EXPECT_EQ(plan(screen, ImageFormat::webp, 96.9).mode, Mode(NearLossless{60}));
  EXPECT_EQ(plan(screen, ImageFormat::jxl, 96.9).mode, Mode(Lossy{96.9}));
  screen.flatFraction = 0.55;
  EXPECT_EQ(plan(screen, ImageFormat::webp, 97).mode, Mode(NearLossless{60}));
  EXPECT_EQ(plan(screen, ImageFormat::jxl, 97).mode, Mode(Lossy{97}));
}

TEST(EncodingStrategy, encodesScreensNearLosslessAsWebPFromEightyFiveOn) {
  const ImageCharacteristics screen = picture(ContentClass::screenContent);
  EXPECT_EQ(plan(screen, ImageFormat::webp, 85).mode, Mode(NearLossless{60}));
  EXPECT_EQ(plan(screen, ImageFormat::webp, 90).mode, Mode(NearLossless{60}));
  EXPECT_EQ(plan(screen, ImageFormat::webp, 84.9).mode, Mode(Lossy{84.9}));
  EXPECT_EQ(plan(screen, ImageFormat::jxl, 90).mode, Mode(Lossy{90}));
}

TEST(EncodingStrategy, encodesEverythingElseLossy) {
  for (const ImageFormat format : ownFormats) {
    for (const ContentClass contentClass : {ContentClass::illustration, ContentClass::photo}) {
      ImageCharacteristics flat = picture(contentClass);
      flat.flatFraction = 0.9;
      EXPECT_EQ(plan(flat, format, 100).mode, Mode(Lossy{100}));
    }
  }
}

TEST(EncodingStrategy, spendsLessEffortOnLargerPictures) {
  const auto effort = [](std::int64_t pixels) {
    return plan(picture(ContentClass::photo, pixels), ImageFormat::webp, 75).effort;
  };
  EXPECT_EQ(effort(1), EncodingPlan::Effort::thorough);
  EXPECT_EQ(effort(2'000'000), EncodingPlan::Effort::thorough);
  EXPECT_EQ(effort(2'000'001), EncodingPlan::Effort::balanced);
  EXPECT_EQ(effort(12'000'000), EncodingPlan::Effort::balanced);
  EXPECT_EQ(effort(12'000'001), EncodingPlan::Effort::fast);
}

TEST(EncodingStrategy, countsPixelsOverBothSides) {
  ImageCharacteristics large = picture(ContentClass::photo);
  large.width = 4000;
  large.height = 3001;
  EXPECT_EQ(plan(large, ImageFormat::webp, 75).effort, EncodingPlan::Effort::fast);
}

struct SecondAttempt {
  double losslessQuality;
  bool losslessCandidate;
  bool singlePass;
  bool operator==(const SecondAttempt&) const = default;
};

constexpr SecondAttempt noAttempt{0, false, true};
constexpr SecondAttempt losslessAttempt{0, true, false};

SecondAttempt secondAttempt(const ImageCharacteristics& characteristics, ImageFormat format,
                            double quality) {
  const EncodingPlan made = plan(characteristics, format, quality);
  return {made.losslessQuality, made.losslessCandidate, made.singlePass};
}

TEST(EncodingStrategy, triesNativeFormatsOnce) {
  for (const ContentClass contentClass : contentClasses) {
    for (const ImageFormat format : nativeFormats) {
      for (const double quality : {75.0, 100.0}) {
        EXPECT_EQ(secondAttempt(picture(contentClass), format, quality), noAttempt);
      }
    }
  }
}

TEST(EncodingStrategy, triesScreensAndIllustrationsLosslessToo) {
  for (const ImageFormat format : ownFormats) {
    const auto attempt = [format](ContentClass contentClass) {
      return secondAttempt(picture(contentClass), format, 80);
    };
    EXPECT_EQ(attempt(ContentClass::screenContent), losslessAttempt);
    EXPECT_EQ(attempt(ContentClass::illustration), losslessAttempt);
    EXPECT_EQ(attempt(ContentClass::photo), noAttempt);
    EXPECT_EQ(attempt(ContentClass::detailedPhoto), noAttempt);
  }
  // Near-lossless is no lossless mode.
  EXPECT_EQ(secondAttempt(picture(ContentClass::screenContent), ImageFormat::webp, 90),
            losslessAttempt);
}

TEST(EncodingStrategy, triesLosslessPicturesLossyToo) {
  for (const ImageFormat format : ownFormats) {
    EXPECT_EQ(secondAttempt(picture(ContentClass::flatGraphic), format, 80),
              (SecondAttempt{80, false, false}));
  }
}

TEST(EncodingStrategy, triesLargePicturesOnce) {
  for (const ImageFormat format : ownFormats) {
    for (const ContentClass contentClass :
         {ContentClass::flatGraphic, ContentClass::illustration}) {
      EXPECT_NE(secondAttempt(picture(contentClass, 4'000'000), format, 80), noAttempt);
      EXPECT_EQ(secondAttempt(picture(contentClass, 4'000'001), format, 80), noAttempt);
    }
  }
}

TEST(EncodingStrategy, triesSmallQuietPNGsLosslessToo) {
  const auto attempt = [](double noise, std::int64_t pixels) {
    ImageCharacteristics quiet = picture(ContentClass::photo, pixels);
    quiet.noiseLevel = noise;
    return secondAttempt(quiet, ImageFormat::png, 80);
  };
  EXPECT_EQ(attempt(5.9, 500'000), losslessAttempt);
  EXPECT_EQ(attempt(5.9, 500'001), noAttempt);
  EXPECT_EQ(attempt(6.0, 500'000), noAttempt);
  EXPECT_EQ(attempt(std::numeric_limits<double>::quiet_NaN(), 500'000), noAttempt);
}

TEST(EncodingStrategy, triesSmallLosslessPNGsWithAPaletteToo) {
  EXPECT_EQ(secondAttempt(picture(ContentClass::photo, 500'000), ImageFormat::png, 96.5),
            (SecondAttempt{96.5, false, false}));
  EXPECT_EQ(secondAttempt(picture(ContentClass::photo, 500'001), ImageFormat::png, 96.5),
            noAttempt);
}

TEST(EncodingStrategy, dithersGradientsFullyAndFlatGraphicsLittle) {
  const auto level = [](ContentClass contentClass, double gradientFraction) {
    ImageCharacteristics characteristics = picture(contentClass);
    characteristics.gradientFraction = gradientFraction;
    return plan(characteristics, ImageFormat::png, 80).ditheringLevel;
  };
  EXPECT_EQ(level(ContentClass::flatGraphic, 0.049), 0.2F);
  EXPECT_EQ(level(ContentClass::flatGraphic, 0.05), 0.7F);
  EXPECT_EQ(level(ContentClass::screenContent, 0.01), 0.7F);
  EXPECT_EQ(level(ContentClass::photo, 0.25), 0.7F);
  EXPECT_EQ(level(ContentClass::photo, 0.251), 1.0F);
  EXPECT_EQ(level(ContentClass::flatGraphic, 0.251), 1.0F);
}

TEST(EncodingStrategyDeathTest, endsTheProcessWhereThePixelCountOverflows) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  ImageCharacteristics impossible = picture(ContentClass::photo);
  impossible.width = impossible.height = std::int64_t{1} << 32;
  EXPECT_DEATH(plan(impossible, ImageFormat::png, 80), "");
}

}  // namespace
}  // namespace orvane
