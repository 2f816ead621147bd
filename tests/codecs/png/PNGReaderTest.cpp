#include <gtest/gtest.h>

#include "codecs/ImageLimits.h"
#include "codecs/ImageSource.h"
#include "support/JPEGBuilder.h"
#include "support/PNGBuilder.h"

namespace orvane::test {
namespace {

Image decode(ByteView file) { return ImageSource::create(file)->image(); }

PNGRecipe smallGradient() {
  return {.width = 9, .height = 7, .pixelAt = [](std::size_t x, std::size_t y) -> Pixel {
            return {static_cast<std::uint16_t>(x * 20), static_cast<std::uint16_t>(y * 30), 99};
          }};
}

TEST(PNGReader, readsInterlacedPicturesOfEverySmallSize) {
  for (std::uint32_t height = 1; height <= 9; ++height) {
    for (std::uint32_t width = 1; width <= 9; ++width) {
      PNGRecipe recipe = smallGradient();
      recipe.width = width;
      recipe.height = height;
      const Image plain = decode(buildPNG(recipe));
      recipe.isInterlaced = true;
      EXPECT_EQ(meanDifference(plain, decode(buildPNG(recipe))), 0) << width << "×" << height;
    }
  }
}

TEST(PNGReader, ignoresWhatBitsWereSignificantAndWhichBackgroundWasMeant) {
  PNGRecipe recipe = smallGradient();
  recipe.beforeData = {{"sBIT", {5, 6, 5}}, {"bKGD", {0, 255, 0, 0, 0, 0}}};
  EXPECT_EQ(meanDifference(decode(buildPNG(recipe)), decode(buildPNG(smallGradient()))), 0);
}

TEST(PNGReader, showsIndicesBeyondThePaletteAsBlack) {
  const Image image = decode(buildPNG({.colorType = paletteType,
                                       .pixelAt = [](auto, auto) -> Pixel { return {9}; },
                                       .beforeData = {{"PLTE", Bytes(9, 200)}}}));
  EXPECT_EQ(pixelAt(image, 0, 0), (Pixel{0, 0, 0, 255}));
}

TEST(PNGReader, acceptsTransparencyThatStandsBeforeThePalette) {
  const Image image =
      decode(buildPNG({.beforeData = {{"tRNS", {0, 0, 0, 0, 0, 0}}, {"PLTE", {1, 2, 3}}}}));
  // libpng takes it from 1.6.47 on, and passes over it before.
  const bool isTaken = image.alpha == AlphaKind::straight;
  const auto alpha = static_cast<std::uint16_t>(isTaken ? 0 : 255);
  EXPECT_EQ(pixelAt(image, 0, 0), (Pixel{0, 0, 0, alpha}));
}

TEST(PNGReader, takesTheNumberOfFramesFromACTLAndTheDefaultPictureFromIDAT) {
  PNGRecipe recipe = smallGradient();
  recipe.beforeData = {{"acTL", pngIntegers({5, 0})}};
  recipe.afterData = {{"fcTL", pngIntegers({0, 9, 7, 0, 0, 0x00010002, 0})},
                      {"fdAT", {0, 0, 0, 1, 1, 2, 3}}};
  const Bytes file = buildPNG(recipe);
  const auto source = ImageSource::create(file);
  EXPECT_EQ(source->frameCount(), 5U);
  EXPECT_EQ(meanDifference(source->image(), decode(buildPNG(smallGradient()))), 0);
}

TEST(PNGReader, countsOneFrameWhereACTLIsUnusable) {
  const auto frameCount = [](PNGRecipe recipe) {
    const Bytes file = buildPNG(recipe);
    return ImageSource::create(file)->frameCount();
  };
  EXPECT_EQ(frameCount({.beforeData = {{"acTL", pngIntegers({0, 0})}}}), 1U);
  EXPECT_EQ(frameCount({.beforeData = {{"acTL", pngIntegers({0x80000000, 0})}}}), 1U);
  EXPECT_EQ(frameCount({.beforeData = {{"acTL", pngIntegers({4})}}}), 1U);
  EXPECT_EQ(frameCount({.afterData = {{"acTL", pngIntegers({4, 0})}}}), 1U);
  const Bytes damaged =
      withWrongCRC(buildPNG({.beforeData = {{"acTL", pngIntegers({4, 0})}}}), "acTL");
  EXPECT_EQ(ImageSource::create(damaged)->frameCount(), 1U);
}

TEST(PNGReader, takesTheOrientationFromEXIfBeforeAndAfterTheData) {
  for (std::uint8_t orientation = 1; orientation <= 8; ++orientation) {
    const PNGChunk exif{"eXIf", exifBlock(orientation)};
    for (const PNGRecipe& recipe :
         {PNGRecipe{.beforeData = {exif}}, PNGRecipe{.afterData = {exif}}}) {
      const Bytes file = buildPNG(recipe);
      EXPECT_EQ(ImageSource::create(file)->orientation(), orientation);
    }
  }
}

TEST(PNGReader, readsPicturesWithABrokenEXIf) {
  for (const Bytes& block : {Bytes{}, Bytes{'M'}, Bytes{'M', 'M', 0, 42}, Bytes(100, 0xFF)}) {
    const Bytes file = buildPNG({.beforeData = {{"eXIf", block}}});
    const auto source = ImageSource::create(file);
    EXPECT_EQ(source->orientation(), 1);
    EXPECT_EQ(source->image().width, 1U);
  }
  const PNGChunk exif{"eXIf", exifBlock(6)};
  const Bytes damaged = withWrongCRC(buildPNG({.beforeData = {exif}}), "eXIf");
  EXPECT_EQ(ImageSource::create(damaged)->orientation(), 1);
}

TEST(PNGReader, refusesEveryTruncation) {
  PNGRecipe recipe = smallGradient();
  recipe.beforeData = {{"tEXt", {'a', 0, 'b'}}};
  const Bytes file = buildPNG(recipe);
  EXPECT_NO_THROW(decode(file));
  for (std::size_t size = 0; size < file.size(); ++size) {
    EXPECT_THROW(decode(ByteView(file).first(size)), UnreadableImage) << size;
  }
}

TEST(PNGReader, refusesWrongCRCsInCriticalChunks) {
  const Bytes file = buildPNG({.colorType = paletteType, .beforeData = {{"PLTE", Bytes(6, 200)}}});
  for (const char* type : {"IHDR", "PLTE", "IDAT"}) {
    EXPECT_THROW(decode(withWrongCRC(file, type)), UnreadableImage) << type;
  }
}

TEST(PNGReader, ignoresAncillaryChunksWithWrongCRCs) {
  PNGRecipe recipe{.beforeData = {{"gAMA", pngIntegers({100000})},
                                  {"tRNS", {0, 0, 0, 0, 0, 0}},
                                  {"tEXt", {'a', 0, 'b'}}}};
  Bytes file = buildPNG(recipe);
  for (const char* type : {"tEXt", "gAMA", "tRNS"}) {
    file = withWrongCRC(buildPNG(recipe), type);
    const Image image = decode(file);
    EXPECT_EQ(image.colorSpace->isSRGB(), std::string_view(type) == "gAMA");
    EXPECT_EQ(image.alpha == AlphaKind::none, std::string_view(type) == "tRNS");
  }
}

/// The small gradient around other image data.
Bytes gradientWithData(const Bytes& stream) {
  std::vector<PNGChunk> chunks = pngChunks(buildPNG(smallGradient()));
  chunks[1].payload = stream;
  return assemblePNG(chunks);
}

TEST(PNGReader, refusesDamagedImageData) {
  const Bytes rows = scanlines(smallGradient());
  const Bytes stream = zlibStream(rows);
  EXPECT_NO_THROW(decode(gradientWithData(stream)));

  Bytes wrongChecksum = stream;
  wrongChecksum.back() ^= 1;
  EXPECT_THROW(decode(gradientWithData(wrongChecksum)), UnreadableImage);

  Bytes wrongBlock = stream;
  wrongBlock[2] |= 6;  // block type 3 (RFC 1951 clause 3.2.3)
  EXPECT_THROW(decode(gradientWithData(wrongBlock)), UnreadableImage);

  Bytes wrongFilter = rows;
  wrongFilter[0] = 5;  // PNG clause 9.2 knows 0 to 4
  EXPECT_THROW(decode(gradientWithData(zlibStream(wrongFilter))), UnreadableImage);

  const ByteView oneRowLess = ByteView(rows).first(rows.size() - (1 + 9 * 3));
  EXPECT_THROW(decode(gradientWithData(zlibStream(oneRowLess))), UnreadableImage);

  EXPECT_THROW(decode(gradientWithData({})), UnreadableImage);
}

TEST(PNGReader, acceptsStrayBytes) {
  const Image expected = decode(buildPNG(smallGradient()));
  const auto expectSame = [&](const Bytes& file) {
    EXPECT_EQ(meanDifference(decode(file), expected), 0);
  };
  Bytes padded = buildPNG(smallGradient());
  padded.insert(padded.end(), 100, 0xAA);
  expectSame(padded);

  PNGRecipe recipe = smallGradient();
  recipe.beforeData = {{"prVt", {1, 2, 3}}, {"teSt", {}}};
  recipe.afterData = {{"prVt", Bytes(1000)}};
  expectSame(buildPNG(recipe));

  Bytes rows = scanlines(smallGradient());
  Bytes paddedStream = zlibStream(rows);
  paddedStream.insert(paddedStream.end(), 10, 0);
  expectSame(gradientWithData(paddedStream));

  rows.insert(rows.end(), 100, 0);
  expectSame(gradientWithData(zlibStream(rows)));
}

TEST(PNGReader, acceptsDataThatUsesALargerWindowThanItDeclares) {
  const Bytes period = [] {
    Bytes noise;
    for (std::uint32_t i = 0, state = 1; i < 999; ++i, state = state * 1664525 + 1013904223) {
      noise.push_back(static_cast<std::uint8_t>(state >> 24));
    }
    return noise;
  }();
  const PNGRecipe recipe{.width = 333, .height = 4, .pixelAt = [&](std::size_t x, std::size_t) {
                           return Pixel{period[x * 3], period[x * 3 + 1], period[x * 3 + 2]};
                         }};
  std::vector<PNGChunk> chunks = pngChunks(buildPNG(recipe));
  Bytes& stream = chunks[1].payload;
  ASSERT_LT(stream.size(), 1500U);  // rows repeat the one above, a thousand bytes back
  stream[0] = 0x08;                 // a window of 256 bytes (RFC 1950 clause 2.2)
  stream[1] = static_cast<std::uint8_t>(31 - 0x0800 % 31);
  const Image image = decode(assemblePNG(chunks));
  EXPECT_EQ(pixelAt(image, 332, 3), (Pixel{period[996], period[997], period[998], 255}));
}

TEST(PNGReader, refusesUnknownCriticalChunks) {
  EXPECT_THROW(decode(buildPNG({.beforeData = {{"CrIt", {1}}}})), UnreadableImage);
}

TEST(PNGReader, refusesFilesThatDoNotBeginWithAHeader) {
  std::vector<PNGChunk> chunks = pngChunks(buildPNG({}));
  std::swap(chunks[0], chunks[1]);
  EXPECT_THROW(decode(assemblePNG(chunks)), UnreadableImage);
  EXPECT_THROW(decode(assemblePNG({{"IEND", {}}})), UnreadableImage);
  EXPECT_THROW(decode(assemblePNG({})), UnreadableImage);
}

TEST(PNGReader, refusesPicturesPastTheLimitsByTheirHeader) {
  EXPECT_THROW(decode(buildPNGClaiming(0, 1, rgbType)), UnreadableImage);
  EXPECT_THROW(decode(buildPNGClaiming(1, 1'000'001, grayType)), UnreadableImage);
  EXPECT_THROW(decode(buildPNGClaiming(1'000'000, 1'000'000, rgbaType)), UnreadableImage);
  EXPECT_THROW(decode(buildPNGClaiming(0x7FFFFFFF, 0x7FFFFFFF, rgbaType)), UnreadableImage);
}

TEST(PNGReader, readsTheLongestSide) {
  const Image image = decode(buildPNG(
      {.width = static_cast<std::uint32_t>(ImageLimits::maximumSide), .colorType = grayType}));
  EXPECT_EQ(image.width, ImageLimits::maximumSide);
}

}  // namespace
}  // namespace orvane::test
