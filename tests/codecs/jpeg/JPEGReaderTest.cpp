#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "codecs/ImageLimits.h"
#include "codecs/ImageSource.h"
#include "support/JPEGBuilder.h"
#include "support/TestImages.h"
#include "support/TestProfiles.h"

namespace orvane {
namespace {

using test::JPEGRecipe;
using test::Pixel;

Image decode(ByteView file) { return ImageSource::create(file)->image(); }

int orientationOf(const std::vector<test::JPEGSegment>& segments) {
  const Bytes file = test::buildJPEG(test::gradientImage(8, 8), {.segments = segments});
  return ImageSource::create(file)->orientation();
}

/// The text of the error that reading a file throws, or nothing.
std::string refusal(ByteView file) {
  try {
    decode(file);
    return {};
  } catch (const UnreadableImage& error) {
    return error.what();
  }
}

void expectRefused(ByteView file, const std::string& what) {
  EXPECT_FALSE(refusal(file).empty()) << what;
}

Image grayImage(std::size_t width, std::size_t height) {
  return test::drawImage(width, height, ChannelLayout::gray, AlphaKind::none, 8,
                         ColorSpace::standard(ColorSpace::Model::gray),
                         [](std::size_t x, std::size_t y) {
                           return Pixel{static_cast<std::uint16_t>((x * 2 + y) % 256)};
                         });
}

Image inkImage(std::size_t width, std::size_t height) {
  return test::drawImage(width, height, ChannelLayout::cmyk, AlphaKind::none, 8,
                         ColorSpace::standard(ColorSpace::Model::cmyk),
                         [](std::size_t, std::size_t) {
                           return Pixel{200, 100, 40, 20};
                         });
}

/// A picture with detail, whose entropy-coded data is long.
Bytes photograph(JPEGRecipe recipe = {}) {
  recipe.quality = 85;
  return test::buildJPEG(test::noisyImage(120, 90), recipe);
}

constexpr int startOfFrame = 0xC0;
constexpr int startOfScan = 0xDA;

/// The file without its EOI marker.
Bytes endless(ByteView file) { return Bytes(file.begin(), file.end() - 2); }

/// The file with an EOI marker at its end.
Bytes ended(ByteView file) { return test::inserted(file, file.size(), Bytes{0xFF, 0xD9}); }

const std::vector<jpeg_scan_info> oneComponentAScan{
    {1, {0}, 0, 63, 0, 0}, {1, {1}, 0, 63, 0, 0}, {1, {2}, 0, 63, 0, 0}};

TEST(JPEGReader, knowsItsFilesByTheirSignature) {
  const Bytes file = test::buildJPEG(test::gradientImage(3, 2));
  EXPECT_EQ(ImageSource::create(file)->typeIdentifier(), "public.jpeg");
  EXPECT_EQ(ImageSource::create(file)->frameCount(), 1u);
  Bytes damaged = file;
  damaged[2] = 0;
  expectRefused(damaged, "signature");
  expectRefused(ByteView(file).first(2), "two bytes");
}

struct Sampling {
  int horizontal, vertical;
};
constexpr Sampling samplings[]{{1, 1}, {2, 1}, {1, 2}, {2, 2}, {4, 1}, {4, 2}};

TEST(JPEGReader, readsPicturesOfAnySizeWithEverySampling) {
  struct Size {
    std::size_t width, height;
  };
  for (const auto [width, height] : {Size{1, 1}, {3, 5}, {15, 15}, {257, 129}}) {
    // Chroma that is the same everywhere loses nothing at any resolution.
    const Image drawn = test::drawImage(
        width, height, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
        [&](std::size_t x, std::size_t y) -> Pixel {
          const auto light = static_cast<std::uint16_t>((x + y) * 150 / (width + height) + 40);
          return {static_cast<std::uint16_t>(light + 30), light,
                  static_cast<std::uint16_t>(light - 20), 255};
        });
    for (const auto [horizontal, vertical] : samplings) {
      const Image image = decode(
          test::buildJPEG(drawn, {.horizontalSampling = horizontal, .verticalSampling = vertical}));
      EXPECT_LT(test::meanDifference(image, drawn), 3)
          << width << " × " << height << ", " << horizontal << " × " << vertical;
    }
  }
}

TEST(JPEGReader, putsChromaOfEverySamplingInItsPlace) {
  const Image drawn = test::gradientImage(257, 129);
  for (const auto [horizontal, vertical] : samplings) {
    const Image image = decode(
        test::buildJPEG(drawn, {.horizontalSampling = horizontal, .verticalSampling = vertical}));
    EXPECT_LT(test::meanDifference(image, drawn), 2) << horizontal << " × " << vertical;
  }
}

TEST(JPEGReader, decodesColorsIntoWhatAPixelBufferShares) {
  const Image image = decode(test::buildJPEG(test::gradientImage(37, 23)));
  EXPECT_TRUE(isOpaqueRendering(image));
  EXPECT_TRUE(image.colorSpace->isSRGB());
  for (std::size_t y = 0; y < image.height; ++y) {
    for (std::size_t x = 0; x < image.width; ++x) EXPECT_EQ(test::pixelAt(image, x, y)[3], 255);
  }
}

TEST(JPEGReader, readsRGBWithAndWithoutAnAdobeMarker) {
  const Image drawn = test::patchImage(60, 40, ColorSpace::sRGB());
  for (const bool hasAdobeMarker : {true, false}) {
    const Image image =
        decode(test::buildJPEG(drawn, {.stored = JCS_RGB, .hasAdobeMarker = hasAdobeMarker}));
    EXPECT_LT(test::meanDifference(image, drawn), 2);
  }
}

TEST(JPEGReader, readsGrayAsOneChannel) {
  const Image drawn = grayImage(257, 129);
  const Image image = decode(test::buildJPEG(drawn, {.stored = JCS_GRAYSCALE}));
  EXPECT_EQ(image.layout, ChannelLayout::gray);
  EXPECT_EQ(image.alpha, AlphaKind::none);
  EXPECT_EQ(image.colorSpace, ColorSpace::standard(ColorSpace::Model::gray));
  EXPECT_LT(test::meanDifference(image, drawn), 3);
}

TEST(JPEGReader, readsEveryCodingOfTheSameCoefficientsAlike) {
  const Image drawn = test::noisyImage(65, 47);
  JPEGRecipe recipe{.horizontalSampling = 2, .verticalSampling = 2};
  const Image sequential = decode(test::buildJPEG(drawn, recipe));
  for (int coding = 1; coding < 8; ++coding) {
    recipe.isProgressive = (coding & 1) != 0;
    recipe.isArithmetic = (coding & 2) != 0;
    recipe.restartInterval = (coding & 4) != 0 ? 3 : 0;
    EXPECT_EQ(test::meanDifference(decode(test::buildJPEG(drawn, recipe)), sequential), 0)
        << coding;
  }
  recipe = {.horizontalSampling = 2, .verticalSampling = 2, .scans = oneComponentAScan};
  EXPECT_EQ(test::meanDifference(decode(test::buildJPEG(drawn, recipe)), sequential), 0);
}

TEST(JPEGReader, takesInkAsInvertedWhereAdobesMarkerStands) {
  const Image drawn = inkImage(16, 16);
  const Image plain = decode(test::buildJPEG(drawn, {.stored = JCS_CMYK, .hasAdobeMarker = false}));
  EXPECT_EQ(plain.layout, ChannelLayout::cmyk);
  EXPECT_EQ(plain.colorSpace->model(), ColorSpace::Model::cmyk);
  EXPECT_LT(test::meanDifference(plain, drawn), 2);

  const Image inverted = test::drawImage(16, 16, ChannelLayout::cmyk, AlphaKind::none, 8,
                                         drawn.colorSpace, [](std::size_t, std::size_t) {
                                           return Pixel{255 - 200, 255 - 100, 255 - 40, 255 - 20};
                                         });
  for (const J_COLOR_SPACE stored : {JCS_CMYK, JCS_YCCK}) {
    const Image image = decode(test::buildJPEG(inverted, {.stored = stored}));
    EXPECT_LT(test::meanDifference(image, drawn), 2) << stored;
  }
}

TEST(JPEGReader, readsTheFirstPictureOfSeveral) {
  const Image first = test::patchImage(30, 20, ColorSpace::sRGB());
  Bytes file = test::buildJPEG(first);
  const Bytes second = test::buildJPEG(test::gradientImage(9, 9));
  file.insert(file.end(), second.begin(), second.end());
  EXPECT_LT(test::meanDifference(decode(file), first), 3);
}

TEST(JPEGReader, decodesAgainWhenAskedAgain) {
  const Bytes file = photograph({.isProgressive = true});
  const auto source = ImageSource::create(file);
  EXPECT_EQ(test::meanDifference(source->image(), source->image()), 0);
}

TEST(JPEGReader, readsTheOrientationFromTheFirstEXIFSegment) {
  for (std::uint32_t orientation = 0; orientation <= 9; ++orientation) {
    EXPECT_EQ(orientationOf({test::exifSegment(orientation)}), static_cast<int>(orientation));
  }
  constexpr std::string_view xmpName("http://ns.adobe.com/xap/1.0/\0<x/>", 33);
  const test::JPEGSegment xmp{0xE1, Bytes(xmpName.begin(), xmpName.end())};
  EXPECT_EQ(orientationOf({xmp, test::exifSegment(6), test::exifSegment(3)}), 6);
  EXPECT_EQ(orientationOf({xmp}), 1);
  EXPECT_EQ(orientationOf({{0xE1, {'E', 'x', 'i', 'f', 0, 0, 'x'}}}), 1);
  EXPECT_EQ(orientationOf({{0xE1, {'E', 'x'}}}), 1);
}

Bytes withProfile(const std::vector<test::JPEGSegment>& segments,
                  J_COLOR_SPACE stored = JCS_YCbCr) {
  const Image image = stored == JCS_YCbCr  ? test::gradientImage(8, 8)
                      : stored == JCS_CMYK ? inkImage(8, 8)
                                           : grayImage(8, 8);
  return test::buildJPEG(image, {.stored = stored, .segments = segments});
}

bool carries(const Image& image, const Bytes& profile) {
  return std::ranges::equal(image.colorSpace->iccData(), profile);
}

TEST(JPEGReader, putsTheProfileTogetherFromItsSegments) {
  const Bytes profile = test::displayP3Profile();
  auto segments = test::profileSegments(profile, profile.size());
  EXPECT_TRUE(carries(decode(withProfile(segments)), profile));
  segments = test::profileSegments(profile, 100);
  EXPECT_TRUE(carries(decode(withProfile(segments)), profile));
  std::ranges::reverse(segments);
  segments.insert(segments.begin() + 1, {0xE2, {'M', 'P', 'F', 0}});
  EXPECT_TRUE(carries(decode(withProfile(segments)), profile));
}

TEST(JPEGReader, readsProfilesOfGrayAndInk) {
  const Bytes gray = test::grayGamma22Profile();
  EXPECT_TRUE(
      carries(decode(withProfile(test::profileSegments(gray, 65000), JCS_GRAYSCALE)), gray));
  const Bytes ink = test::cmykProfile();
  EXPECT_TRUE(carries(decode(withProfile(test::profileSegments(ink, 65000), JCS_CMYK)), ink));
}

TEST(JPEGReader, goesWithoutAProfileWhoseSegmentsAreNoSequence) {
  const auto whole = test::profileSegments(test::displayP3Profile(), 100);
  constexpr std::size_t numberAt = 12;
  auto segments = whole;
  const auto expectNone = [&](const char* what) {
    EXPECT_TRUE(decode(withProfile(segments)).colorSpace->isSRGB()) << what;
  };
  segments.pop_back();
  expectNone("one missing");
  segments = whole;
  segments.push_back(segments.front());
  expectNone("one twice");
  segments = whole;
  segments[2] = segments[1];
  expectNone("one in place of another");
  segments = whole;
  segments[1].data[numberAt] = 0;
  expectNone("number 0");
  segments = whole;
  segments[1].data[numberAt] = 250;
  expectNone("a number past the count");
  segments = whole;
  segments[1].data[numberAt + 1] = 9;
  expectNone("another count");
  segments = {{0xE2, Bytes(whole[0].data.begin(), whole[0].data.begin() + numberAt)}};
  expectNone("no numbers");
}

TEST(JPEGReader, refusesAProfileThatIsTooLarge) {
  Bytes large = test::displayP3Profile();
  large.resize(ImageLimits::maximumICCBytes + 1);
  expectRefused(withProfile(test::profileSegments(large, 65000)), "a profile past the limit");
}

TEST(JPEGReader, goesWithoutAProfileForOtherColors) {
  const auto gray = test::profileSegments(test::grayGamma22Profile(), 65000);
  EXPECT_TRUE(decode(withProfile(gray)).colorSpace->isSRGB());
}

TEST(JPEGReader, refusesAPictureThatEndsTooEarly) {
  for (const bool isProgressive : {false, true}) {
    for (const bool isArithmetic : {false, true}) {
      for (const unsigned restartInterval : {0u, 4u}) {
        const Bytes file = photograph({.isProgressive = isProgressive,
                                       .isArithmetic = isArithmetic,
                                       .restartInterval = restartInterval});
        for (std::size_t size = 0; size + 8 < file.size(); size += size < 700 ? 1 : 97) {
          expectRefused(ByteView(file).first(size),
                        std::to_string(size) + " of " + std::to_string(file.size()));
        }
      }
    }
  }
}

/// The file up to each of its scans but the first.
std::vector<Bytes> cutBetweenScans(const Bytes& file) {
  std::vector<Bytes> cuts;
  std::size_t at = test::firstScanData(file);
  try {
    for (;; at += 2) {
      at = test::findMarker(file, startOfScan, at);
      cuts.emplace_back(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(at));
    }
  } catch (const std::runtime_error&) {
    return cuts;
  }
}

TEST(JPEGReader, refusesAPictureThatEndsBetweenTwoScans) {
  const auto progressive = cutBetweenScans(photograph({.isProgressive = true}));
  const auto sequential = cutBetweenScans(photograph({.scans = oneComponentAScan}));
  EXPECT_EQ(progressive.size(), 9u);
  EXPECT_EQ(sequential.size(), 2u);
  for (const Bytes& file : progressive) {
    EXPECT_EQ(refusal(file), "the last scans are missing");
    EXPECT_EQ(refusal(ended(file)), "");  // an encoder may stop at any precision
  }
  for (const Bytes& file : sequential) {
    EXPECT_EQ(refusal(file), "a component is missing");
    EXPECT_EQ(refusal(ended(file)), "a component is missing");
  }
}

TEST(JPEGReader, doesWithoutTheEndMarkerWhereAllOfThePictureIsThere) {
  for (const Bytes& file :
       {photograph(), photograph({.isProgressive = true}), photograph({.restartInterval = 4}),
        photograph({.scans = oneComponentAScan})}) {
    EXPECT_EQ(test::meanDifference(decode(endless(file)), decode(file)), 0);
  }
}

TEST(JPEGReader, refusesArithmeticCodingWithoutAnEndMarker) {
  expectRefused(endless(photograph({.isArithmetic = true})), "who knows what is missing");
}

TEST(JPEGReader, refusesDamagedEntropyCodedData) {
  for (const bool isProgressive : {false, true}) {
    const Bytes file = photograph({.isProgressive = isProgressive});
    const std::size_t middle = test::firstScanData(file) + 200;
    const Bytes part(file.begin() + 900, file.begin() + 1100);
    const Bytes ones{0xFF, 0, 0xFF, 0, 0xFF, 0};  // no Huffman code is all ones (T.81 C)
    expectRefused(test::inserted(file, middle, ones), "no such code");
    expectRefused(test::inserted(file, middle, part), "too much");
    expectRefused(test::without(file, middle, 100), "too little");
    expectRefused(test::inserted(file, middle, Bytes{0xFF, 0xD9}), "an early end");
    expectRefused(test::inserted(file, middle, Bytes{0xFF, 0xD3}), "a stray restart marker");
  }
}

TEST(JPEGReader, refusesRestartIntervalsOutOfOrder) {
  const Bytes file = photograph({.restartInterval = 4});
  const std::size_t second = test::findMarker(file, 0xD1, test::firstScanData(file));
  const std::size_t third = test::findMarker(file, 0xD2, second);
  expectRefused(test::without(file, second, 2), "a marker missing");
  expectRefused(test::without(file, second, third - second), "an interval missing");
  Bytes renumbered = file;
  renumbered[second + 1] = 0xD5;
  expectRefused(renumbered, "a wrong number");
}

TEST(JPEGReader, acceptsStrayBytesThatHarmNothing) {
  const Bytes file = photograph();
  const Image image = decode(file);
  const auto expectSame = [&](const Bytes& changed, const char* what) {
    EXPECT_EQ(test::meanDifference(decode(changed), image), 0) << what;
  };
  constexpr int defineQuantization = 0xDB;
  const Bytes stray{1, 2, 3, 4, 5};
  expectSame(test::inserted(file, file.size(), Bytes(1000, 'x')), "after the end");
  expectSame(test::inserted(file, test::findMarker(file, defineQuantization), stray),
             "between segments of the header");
  expectSame(test::inserted(file, file.size() - 2, Bytes(50, 0xFF)), "fill bytes");
  expectSame(test::inserted(file, file.size() - 2, Bytes(50, 0)), "padding");
}

TEST(JPEGReader, refusesBytesThatAScanShouldHaveTaken) {
  const Bytes file = photograph();
  for (const std::size_t at : {0u, 20u, 49u}) {
    Bytes stray(50, 0);
    stray[at] = 0x55;
    // The first few lie in libjpeg's bit buffer, unseen.
    const bool isSeen = at > 8;
    EXPECT_EQ(refusal(test::inserted(file, file.size() - 2, stray)).empty(), !isSeen) << at;
  }
  expectRefused(test::inserted(endless(file), file.size() - 2, Bytes(50, 0)), "zeros to the end");
}

TEST(JPEGReader, acceptsWhatTheHeaderGetsWrong) {
  const Bytes file = test::buildJPEG(test::gradientImage(16, 16), {.hasAdobeMarker = true});
  constexpr int adobeMarker = 0xEE;
  constexpr int jfifMarker = 0xE0;
  Bytes changed = file;
  changed[test::findMarker(file, adobeMarker) + 15] = 7;  // the colour transform
  EXPECT_EQ(refusal(changed), "");
  changed = file;
  changed[test::findMarker(file, jfifMarker) + 9] = 9;  // the major version
  EXPECT_EQ(refusal(changed), "");
  changed = file;
  changed[test::firstScanData(file) - 2] = 0;  // the end of spectral selection
  EXPECT_EQ(refusal(changed), "");
}

TEST(JPEGReader, refusesMoreScansThanTheLimit) {
  const auto file = [](int scans) {
    return test::buildJPEG(grayImage(8, 8),
                           {.stored = JCS_GRAYSCALE, .scans = test::manyScans(scans)});
  };
  EXPECT_EQ(refusal(file(ImageLimits::maximumProgressiveScans)), "");
  EXPECT_EQ(refusal(file(ImageLimits::maximumProgressiveScans + 1)), "too many scans");
}

TEST(JPEGReader, refusesASizePastTheLimitsBeforeItTakesMemory) {
  Bytes file = photograph();
  const std::size_t size = test::findMarker(file, startOfFrame) + 5;
  for (const std::size_t at : {size, size + 2}) {
    file[at] = 0xFF;
    file[at + 1] = 0xDC;
  }
  EXPECT_EQ(refusal(file), "too many pixels");  // 65 500 each way
  file[size] = file[size + 1] = 0;
  expectRefused(file, "no rows");
}

TEST(JPEGReader, readsSidesOfAsManyPixelsAsLibjpegTakes) {
  Bytes file = test::buildJPEG(grayImage(65'500, 1), {.stored = JCS_GRAYSCALE});
  EXPECT_EQ(decode(file).width, 65'500u);
  const std::size_t width = test::findMarker(file, startOfFrame) + 7;
  ASSERT_EQ(file[width] << 8 | file[width + 1], 65'500);
  for (const int tooWide : {65'501, 65'535}) {  // the format itself ends at 65 535 (T.81 B.2.2)
    file[width] = static_cast<std::uint8_t>(tooWide >> 8);
    file[width + 1] = static_cast<std::uint8_t>(tooWide);
    EXPECT_EQ(refusal(file), "Maximum supported image dimension is 65500 pixels");
  }
}

TEST(JPEGReader, refusesWhatIsNotEightBitsOfKnownColors) {
  const Bytes file = photograph();
  const std::size_t frame = test::findMarker(file, startOfFrame);
  Bytes changed = file;
  changed[frame + 4] = 12;
  expectRefused(changed, "12 bits per sample");
  for (const int process : {0xC3, 0xC5, 0xC7, 0xCB, 0xCF}) {  // T.81 table B.1
    changed = file;
    changed[frame + 1] = static_cast<std::uint8_t>(process);
    expectRefused(changed, "lossless or hierarchical");
  }
  const Image two =
      test::drawImage(8, 8, ChannelLayout::grayAlpha, AlphaKind::straight, 8,
                      ColorSpace::standard(ColorSpace::Model::gray), [](std::size_t, std::size_t) {
                        return Pixel{9, 9};
                      });
  EXPECT_EQ(refusal(test::buildJPEG(two, {.stored = JCS_UNKNOWN})),
            "components of unknown meaning");
}

TEST(JPEGReader, neverGivesAPictureOfAnotherShape) {
  std::mt19937 random(42);
  const std::vector<Bytes> files{
      test::buildJPEG(test::noisyImage(20, 12), {.horizontalSampling = 2}),
      test::buildJPEG(test::noisyImage(20, 12), {.isProgressive = true, .restartInterval = 2}),
      test::buildJPEG(inkImage(20, 12), {.stored = JCS_YCCK, .isArithmetic = true})};
  for (int round = 0; round < 1500; ++round) {
    Bytes file = files[random() % files.size()];
    for (unsigned changes = random() % 4 + 1; changes > 0; --changes) {
      file[random() % file.size()] = static_cast<std::uint8_t>(random());
    }
    try {
      const auto source = ImageSource::create(file);
      if (source->typeIdentifier() != "public.jpeg") continue;
      const Image image = source->image();
      EXPECT_EQ(image.bytesPerRow, image.width * channelCount(image.layout));
    } catch (const UnreadableImage&) {
    } catch (const std::bad_alloc&) {
    }
  }
}

}  // namespace
}  // namespace orvane
