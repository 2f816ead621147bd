#include "pipeline/Compression.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/TestFiles.h"
#include "support/TestImages.h"

namespace orvane {
namespace {

Bytes output(ByteView file, ImageFormat format, double quality, int threads = 1) {
  Compression compression(file, format, quality);
  compression.decode();
  return compression.encode(threads);
}

TEST(Compression, needsNoFileOnceItIsDecoded) {
  for (const ImageFormat format : ImageFormat::allCases) {
    Bytes file = test::pngFile(test::noisyImage(60, 40));
    const Bytes meant = output(file, format, 95);
    Compression compression(file, format, 95);
    compression.decode();
    ASSERT_FALSE(compression.encodesFromFile());
    std::ranges::fill(file, std::uint8_t{0});
    EXPECT_EQ(compression.encode(), meant) << format.rawValue();
  }
}

TEST(Compression, needsTheFileThatItRepacks) {
  const Bytes file = test::jpegFile(test::noisyImage(60, 40));
  const auto encodesFromFile = [&](ImageFormat format, double quality) {
    return Compression(file, format, quality).encodesFromFile();
  };
  EXPECT_TRUE(encodesFromFile(ImageFormat::jxl, 90));
  EXPECT_FALSE(encodesFromFile(ImageFormat::jxl, 89));
  EXPECT_FALSE(encodesFromFile(ImageFormat::png, 90));
}

TEST(Compression, makesTheSameBytesOnAnyNumberOfThreads) {
  for (const Bytes& file : {test::pngFile(test::gradientImage(1300, 800)),
                            test::pngFile(test::alphaGradientImage(1300, 800)),
                            test::jpegFile(test::noisyImage(1300, 800))}) {
    for (const ImageFormat format : ImageFormat::allCases) {
      const Bytes meant = output(file, format, 90);
      for (const int threads : {2, 8}) {
        EXPECT_EQ(output(file, format, 90, threads), meant) << format.rawValue() << threads;
      }
    }
  }
}

}  // namespace
}  // namespace orvane
