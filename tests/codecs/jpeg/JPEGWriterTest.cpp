#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <stdexcept>

#include "codecs/ImageDestination.h"
#include "codecs/ImageSource.h"
#include "codecs/jpeg/JPEGLibrary.h"
#include "support/JPEGBuilder.h"
#include "support/TestBuffers.h"
#include "support/TestImages.h"
#include "support/TestProfiles.h"

namespace orvane {
namespace {

using test::Pixel;

Bytes encode(const Image& image, double quality) {
  return ImageDestination::of(ImageFormat::jpeg)->encode(image, test::measured(image), quality, 1);
}

Image decode(ByteView file) { return ImageSource::create(file)->image(); }

/// A file's header as libjpeg reads it.
struct Header {
  int components = 0;
  int horizontalSampling = 0;
  int verticalSampling = 0;
  bool isProgressive = false;
  bool hasJFIFMarker = false;
  bool hasAdobeMarker = false;
};

Header headerOf(const Bytes& file) {
  JPEGErrors errors;
  JPEGDecompressor info;
  info.err = &errors;
  Header header;
  errors.run<std::runtime_error>([&] {
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, file.data(), static_cast<unsigned long>(file.size()));
    jpeg_read_header(&info, TRUE);
    header = {.components = info.num_components,
              .horizontalSampling = info.comp_info[0].h_samp_factor,
              .verticalSampling = info.comp_info[0].v_samp_factor,
              .isProgressive = info.progressive_mode != 0,
              .hasJFIFMarker = info.saw_JFIF_marker != 0,
              .hasAdobeMarker = info.saw_Adobe_marker != 0};
  });
  return header;
}

bool hasMarker(const Bytes& file, int code) {
  try {
    return test::findMarker(file, code) < test::firstScanData(file);
  } catch (const std::runtime_error&) {
    return false;
  }
}

int chromaSamplingOf(const Image& image, double quality) {
  const Header header = headerOf(encode(image, quality));
  EXPECT_EQ(header.horizontalSampling, header.verticalSampling);
  return header.horizontalSampling;
}

/// Strokes of one colour on white, like lines of small print.
Image textImage(const Pixel& color) {
  return test::drawImage(160, 120, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
                         [&](std::size_t x, std::size_t y) {
                           const bool isInk = y % 16 < 8 && (x * 7 + y * 3) % 11 < 2 && x % 40 < 34;
                           return isInk ? color : Pixel{255, 255, 255, 255};
                         });
}

Image grayPixels(const ColorSpacePtr& colorSpace) {
  return test::drawImage(70, 50, ChannelLayout::rgba, AlphaKind::none, 8, colorSpace,
                         [](std::size_t x, std::size_t y) {
                           const auto light = static_cast<std::uint16_t>(x + y);
                           return Pixel{light, light, light, 255};
                         });
}

TEST(JPEGWriter, keepsFlatColorsAtHighQuality) {
  const Image drawn = test::patchImage(96, 64, ColorSpace::sRGB());
  const Image image = decode(encode(drawn, 0.95));
  for (std::size_t patch = 0; patch < 6; ++patch) {
    const std::size_t x = 16 + patch % 3 * 32;
    const std::size_t y = 16 + patch / 3 * 32;
    const Pixel before = test::pixelAt(drawn, x, y);
    const Pixel after = test::pixelAt(image, x, y);
    for (std::size_t c = 0; c < 3; ++c) {
      EXPECT_NEAR(int{before[c]}, int{after[c]}, 2) << patch << ", " << c;
    }
  }
}

TEST(JPEGWriter, writesPicturesOfAnySize) {
  struct Size {
    std::size_t width, height;
  };
  for (const auto [width, height] :
       {Size{1, 1}, {3, 5}, {15, 15}, {16, 16}, {257, 129}, {1, 300}, {300, 1}}) {
    const Image drawn = test::gradientImage(width, height);
    for (const double quality : {0.0, 0.5, 0.75, 1.0}) {
      const Image image = decode(encode(drawn, quality));
      EXPECT_EQ(image.width, width);
      EXPECT_EQ(image.height, height);
    }
    EXPECT_LT(test::meanDifference(decode(encode(drawn, 1)), drawn), 1.5);
  }
}

TEST(JPEGWriter, writesProgressiveJFIFWithoutMetadata) {
  const Bytes file = encode(test::noisyImage(120, 80), 0.75);
  const Header header = headerOf(file);
  EXPECT_TRUE(header.isProgressive);
  EXPECT_TRUE(header.hasJFIFMarker);
  EXPECT_FALSE(header.hasAdobeMarker);
  EXPECT_EQ(header.components, 3);
  for (const int code : {0xE1, 0xE2, 0xED, 0xFE}) EXPECT_FALSE(hasMarker(file, code)) << code;
}

std::size_t countScans(const Bytes& file) {
  constexpr std::array<std::uint8_t, 2> startOfScan{0xFF, 0xDA};
  std::size_t count = 0;
  for (auto rest = std::ranges::search(file, startOfScan); !rest.empty();
       rest = std::ranges::search(rest.end(), file.end(), startOfScan.begin(), startOfScan.end())) {
    ++count;
  }
  return count;
}

TEST(JPEGWriter, writesAtMostTenScans) {
  for (const Image& image : {test::noisyImage(160, 120), test::gradientImage(160, 120),
                             textImage({220, 0, 0, 255}), grayPixels(ColorSpace::sRGB())}) {
    const std::size_t scans = countScans(encode(image, 0.75));
    EXPECT_GE(scans, 2u);
    EXPECT_LE(scans, 10u);
  }
}

TEST(JPEGWriter, spendsMoreBytesAndLosesLessForEveryHigherQuality) {
  const Image drawn = test::noisyImage(160, 120);
  std::size_t size = 0;
  double difference = 256;
  for (const double quality : {0.1, 0.3, 0.5, 0.7, 0.85, 0.95, 1.0}) {
    const Bytes file = encode(drawn, quality);
    EXPECT_GT(file.size(), size) << quality;
    const double lost = test::meanDifference(decode(file), drawn);
    EXPECT_LT(lost, difference) << quality;
    size = file.size();
    difference = lost;
  }
}

TEST(JPEGWriter, keepsChromaWholeWhereItsDetailShows) {
  constexpr Pixel red{220, 0, 0, 255};
  constexpr Pixel black{0, 0, 0, 255};
  EXPECT_EQ(chromaSamplingOf(textImage(red), 0.75), 1);
  EXPECT_EQ(chromaSamplingOf(test::noisyImage(160, 120), 0.95), 1);
  EXPECT_EQ(chromaSamplingOf(test::noisyImage(160, 120), 0.75), 2);
  EXPECT_EQ(chromaSamplingOf(test::gradientImage(160, 120), 0.75), 2);
  EXPECT_EQ(headerOf(encode(textImage(black), 0.75)).components, 1);
}

TEST(JPEGWriter, writesGrayPixelsAsOneComponent) {
  const Image drawn = grayPixels(ColorSpace::sRGB());
  const Bytes file = encode(drawn, 1);
  EXPECT_EQ(headerOf(file).components, 1);
  const Image image = decode(file);
  for (const std::size_t x : {0u, 33u, 69u}) {
    EXPECT_NEAR(int{test::pixelAt(image, x, 20)[0]}, int{test::pixelAt(drawn, x, 20)[0]}, 1);
  }
}

TEST(JPEGWriter, writesThreeComponentsForOneColoredPixel) {
  const Image drawn = test::drawImage(
      70, 50, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
      [](std::size_t x, std::size_t y) {
        return x == 69 && y == 49 ? Pixel{100, 100, 101, 255} : Pixel{100, 100, 100, 255};
      });
  EXPECT_EQ(headerOf(encode(drawn, 0.75)).components, 3);
}

TEST(JPEGWriter, writesGrayPixelsOfAProfileAsColors) {
  const auto p3 = ColorSpace::fromICC(test::displayP3Profile(), ColorSpace::Model::rgb);
  EXPECT_EQ(headerOf(encode(grayPixels(p3), 0.75)).components, 3);
}

TEST(JPEGWriter, carriesTheProfileUnlessItIsSRGB) {
  const Bytes profile = test::displayP3Profile();
  const auto p3 = ColorSpace::fromICC(profile, ColorSpace::Model::rgb);
  const Image image = decode(encode(test::patchImage(40, 30, p3), 0.75));
  EXPECT_TRUE(std::ranges::equal(image.colorSpace->iccData(), profile));
  constexpr int profileMarker = 0xE2;
  EXPECT_FALSE(
      hasMarker(encode(test::patchImage(40, 30, ColorSpace::sRGB()), 0.75), profileMarker));
}

TEST(JPEGWriter, splitsLongProfiles) {
  const auto space = test::spaceOfLongProfile(200'000);
  ASSERT_EQ(space->iccData().size(), 200'000u);
  const Image image = decode(encode(test::patchImage(40, 30, space), 0.75));
  EXPECT_TRUE(std::ranges::equal(image.colorSpace->iccData(), space->iccData()));
}

TEST(JPEGWriter, refusesProfilesLongerThanAllTheirSegments) {
  constexpr std::uint32_t longest = 255 * 65'519;  // ICC.1:2010 annex B.4
  EXPECT_GT(encode(test::patchImage(8, 8, test::spaceOfLongProfile(longest)), 0.75).size(),
            longest);
  const Image image = test::patchImage(8, 8, test::spaceOfLongProfile(longest + 1));
  ASSERT_EQ(image.colorSpace->iccData().size(), longest + 1);
  EXPECT_THROW(encode(image, 0.75), UnwritableImage);
}

TEST(JPEGWriter, rendersWhatIsNotPackedOpaqueRGB) {
  const Image ink =
      test::drawImage(40, 40, ChannelLayout::cmyk, AlphaKind::none, 8,
                      ColorSpace::standard(ColorSpace::Model::cmyk), [](std::size_t, std::size_t) {
                        return Pixel{0, 255, 255, 0};
                      });
  const Pixel red = test::pixelAt(decode(encode(ink, 0.95)), 20, 20);
  EXPECT_NEAR(int{red[0]}, 255, 2);
  EXPECT_NEAR(int{red[1]}, 0, 2);

  const Image deep = test::drawImage(40, 40, ChannelLayout::rgb, AlphaKind::none, 16,
                                     ColorSpace::sRGB(), [](std::size_t, std::size_t) {
                                       return Pixel{0x2020, 0x8080, 0xC0C0};
                                     });
  const Pixel blue = test::pixelAt(decode(encode(deep, 0.95)), 20, 20);
  EXPECT_NEAR(int{blue[0]}, 0x20, 2);
  EXPECT_NEAR(int{blue[1]}, 0x80, 2);
  EXPECT_NEAR(int{blue[2]}, 0xC0, 2);
}

TEST(JPEGWriter, writesTheSameBytesEveryTime) {
  const Image image = test::noisyImage(100, 60);
  EXPECT_EQ(encode(image, 0.8), encode(image, 0.8));
}

TEST(JPEGWriter, writesSidesOfAsManyPixelsAsLibjpegTakes) {
  EXPECT_EQ(decode(encode(test::gradientImage(65'500, 1), 0.75)).width, 65'500u);
  EXPECT_EQ(decode(encode(test::gradientImage(1, 65'500), 0.75)).height, 65'500u);
}

TEST(JPEGWriter, refusesSidesThatLibjpegDoesNotTake) {
  for (const Image& image : {test::gradientImage(65'501, 1), test::gradientImage(1, 65'501)}) {
    try {
      encode(image, 0.75);
      FAIL();
    } catch (const UnwritableImage& error) {
      EXPECT_STREQ(error.what(), "a side is too long");
    }
  }
  Image empty = test::gradientImage(1, 1);
  empty.width = empty.bytesPerRow = 0;
  EXPECT_THROW(encode(empty, 0.75), UnwritableImage);
}

}  // namespace
}  // namespace orvane
