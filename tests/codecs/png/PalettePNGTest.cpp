#include "codecs/png/PalettePNG.h"

#include <gtest/gtest.h>

#include "codecs/png/PNGQuantEncoder.h"
#include "picture/ColorProfile.h"
#include "support/FailingZlib.h"
#include "support/TestImages.h"
#include "support/TestProfiles.h"

namespace orvane {
namespace {

/// The file that the same library calls give.
Bytes expectedFile(const RGBABuffer& buffer, int target, int speed, float dithering) {
  const LiqAttr attributes(liq_attr_create());
  liq_set_quality(attributes.get(), 0, target);
  liq_set_speed(attributes.get(), speed);
  const auto quantized = PNGQuantEncoder::quantize(attributes.get(), buffer.pixels, buffer.width,
                                                   buffer.height, dithering);
  return PNGWriter::writeIndexedPNG(buffer.width, buffer.height, quantized.indices,
                                    quantized.palette,
                                    ColorProfile::embeddableICC(*buffer.colorSpace));
}

TEST(PalettePNG, setsTheTargetFromTheRoundedQualityAndTheSpeedFromTheEffort) {
  const RGBABuffer buffer(test::noisyImage(64, 48));
  using Effort = EncodingPlan::Effort;
  struct Row {
    double quality;
    Effort effort;
    int target, speed;
  };
  for (const Row& row : {Row{0.4, Effort::fast, 0, 8}, Row{99.6, Effort::balanced, 100, 4},
                         Row{62.5, Effort::thorough, 63, 3}, Row{75, Effort::fast, 75, 8}}) {
    const EncodingPlan plan{.mode = EncodingPlan::Lossy{row.quality},
                            .effort = row.effort,
                            .quality = row.quality,
                            .ditheringLevel = 0.7F};
    EXPECT_EQ(PalettePNG::encode(buffer, plan), expectedFile(buffer, row.target, row.speed, 0.7F))
        << row.quality;
  }
}

TEST(PalettePNG, carriesTheProfileOfTheBuffersSpace) {
  const ColorSpacePtr p3 = ColorSpace::fromICC(test::displayP3Profile(), ColorSpace::Model::rgb);
  const RGBABuffer buffer(test::patchImage(30, 20, p3));
  const EncodingPlan plan{.mode = EncodingPlan::Lossy{80}, .quality = 80, .ditheringLevel = 1};
  EXPECT_EQ(PalettePNG::encode(buffer, plan), expectedFile(buffer, 80, 4, 1));
}

TEST(PalettePNG, isLosslessWhereThePaletteCannotBeHad) {
  const RGBABuffer empty(0, 0, makePixelMemory(0), ColorSpace::sRGB());  // no picture to quantise
  const EncodingPlan plan{.mode = EncodingPlan::Lossy{80}, .quality = 80};
  EXPECT_EQ(PalettePNG::encode(empty, plan), PNGQuantEncoder::encodeLossless(empty, plan));
}

TEST(PalettePNG, isLosslessWhereTheIndexedFileCannotBeWritten) {
  const RGBABuffer buffer(test::noisyImage(30, 20));
  const EncodingPlan plan{.mode = EncodingPlan::Lossy{80}, .quality = 80};
  const Bytes lossless = PNGQuantEncoder::encodeLossless(buffer, plan);
  ASSERT_NE(PalettePNG::encode(buffer, plan), lossless);
  const test::FailingZlib zlib(1);
  EXPECT_EQ(PalettePNG::encode(buffer, plan), lossless);
}

TEST(PalettePNG, failsOnlyWhereTheLosslessFileCannotBeWrittenEither) {
  const RGBABuffer buffer(test::noisyImage(30, 20));
  const test::FailingZlib zlib(2);
  EXPECT_THROW(PalettePNG::encode(buffer, {.mode = EncodingPlan::Lossy{80}, .quality = 80}),
               ZlibError);
}

}  // namespace
}  // namespace orvane
