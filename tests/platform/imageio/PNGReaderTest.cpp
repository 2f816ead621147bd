#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include "platform/imageio/ImageLimits.h"
#include "platform/imageio/ImageSource.h"
#include "support/JPEGBuilder.h"
#include "support/PNGBuilder.h"

namespace orvane::test {
namespace {

Image decode(ByteView file) { return ImageSource::create(file)->image(); }

/// Any samples of this depth, different from pixel to pixel and from channel to channel.
std::function<Pixel(std::size_t, std::size_t)> variedSamples(int bitDepth) {
  return [bitDepth](std::size_t x, std::size_t y) {
    Pixel pixel{};
    for (std::size_t c = 0; c < pixel.size(); ++c) {
      const std::size_t value = (x + 1) * 40503 + (y + 1) * 30103 + c * 12979;
      pixel[c] = static_cast<std::uint16_t>(value % (std::size_t{1} << bitDepth));
    }
    return pixel;
  };
}

/// A colour for each index.
PNGChunk paletteChunk(std::size_t count) {
  PNGChunk chunk{"PLTE", {}};
  for (std::size_t i = 0; i < count; ++i) {
    const auto index = static_cast<std::uint8_t>(i);
    chunk.payload.insert(chunk.payload.end(), {index, static_cast<std::uint8_t>(255 - index),
                                               static_cast<std::uint8_t>(index * 7)});
  }
  return chunk;
}

PNGRecipe smallGradient() {
  return {.width = 9, .height = 7, .pixelAt = [](std::size_t x, std::size_t y) -> Pixel {
            return {static_cast<std::uint16_t>(x * 20), static_cast<std::uint16_t>(y * 30), 99};
          }};
}

/// One of the forms that PNG allows (table 11.1), with or without tRNS and interlacing.
struct Form {
  std::uint8_t colorType;
  std::uint8_t bitDepth;
  bool hasTransparency;
  bool isInterlaced;
};

std::vector<Form> allForms() {
  constexpr std::array<std::pair<std::uint8_t, std::uint8_t>, 15> types{{{grayType, 1},
                                                                         {grayType, 2},
                                                                         {grayType, 4},
                                                                         {grayType, 8},
                                                                         {grayType, 16},
                                                                         {rgbType, 8},
                                                                         {rgbType, 16},
                                                                         {paletteType, 1},
                                                                         {paletteType, 2},
                                                                         {paletteType, 4},
                                                                         {paletteType, 8},
                                                                         {grayAlphaType, 8},
                                                                         {grayAlphaType, 16},
                                                                         {rgbaType, 8},
                                                                         {rgbaType, 16}}};
  std::vector<Form> forms;
  for (const auto& [colorType, bitDepth] : types) {
    for (const bool isInterlaced : {false, true}) {
      forms.push_back({colorType, bitDepth, false, isInterlaced});
      if (colorType <= paletteType) forms.push_back({colorType, bitDepth, true, isInterlaced});
    }
  }
  return forms;
}

class PNGForm : public testing::TestWithParam<Form> {
 protected:
  PNGForm()
      : recipe_{.width = 13,
                .height = 11,
                .colorType = GetParam().colorType,
                .bitDepth = GetParam().bitDepth,
                .isInterlaced = GetParam().isInterlaced,
                .pixelAt = variedSamples(GetParam().bitDepth)} {
    if (isPalette()) recipe_.beforeData.push_back(paletteChunk(std::size_t{1} << recipe_.bitDepth));
    if (GetParam().hasTransparency) recipe_.beforeData.push_back(transparency());
  }

  bool isPalette() const { return recipe_.colorType == paletteType; }
  bool isGray() const {
    return recipe_.colorType == grayType || recipe_.colorType == grayAlphaType;
  }
  bool isDeep() const { return recipe_.bitDepth == 16; }
  bool hasAlpha() const {
    return GetParam().hasTransparency || recipe_.colorType == grayAlphaType ||
           recipe_.colorType == rgbaType;
  }

  /// For a palette the alpha of the first two entries, else the colour of one pixel.
  PNGChunk transparency() const {
    if (isPalette()) return {"tRNS", {0, 100}};
    PNGChunk chunk{"tRNS", {}};
    const Pixel key = recipe_.pixelAt(5, 4);
    for (std::size_t c = 0; c < (isGray() ? 1U : 3U); ++c) {
      chunk.payload.push_back(static_cast<std::uint8_t>(key[c] >> 8));
      chunk.payload.push_back(static_cast<std::uint8_t>(key[c]));
    }
    return chunk;
  }

  std::uint16_t alphaAt(const Pixel& stored) const {
    const std::uint16_t opaque = isDeep() ? 65535 : 255;
    if (recipe_.colorType == grayAlphaType) return stored[1];
    if (recipe_.colorType == rgbaType) return stored[3];
    if (!GetParam().hasTransparency) return opaque;
    if (isPalette()) return stored[0] == 0 ? 0 : stored[0] == 1 ? 100 : opaque;
    const Pixel key = recipe_.pixelAt(5, 4);
    return std::equal(key.begin(), key.begin() + (isGray() ? 1 : 3), stored.begin()) ? 0 : opaque;
  }

  /// What the decoded picture must hold at one place, alpha or filler last.
  std::vector<std::uint16_t> expectedAt(std::size_t x, std::size_t y) const {
    const Pixel stored = recipe_.pixelAt(x, y);
    std::vector<std::uint16_t> channels;
    if (isPalette()) {
      const auto colors = paletteChunk(std::size_t{1} << recipe_.bitDepth).payload;
      channels.assign(colors.begin() + stored[0] * 3, colors.begin() + stored[0] * 3 + 3);
    } else if (isGray()) {
      const int largest = isDeep() ? 65535 : 255;
      channels = {static_cast<std::uint16_t>(stored[0] * largest / ((1 << recipe_.bitDepth) - 1))};
    } else {
      channels.assign(stored.begin(), stored.begin() + 3);
    }
    const bool hasFiller = !isGray() && !isDeep();
    if (hasAlpha() || hasFiller) channels.push_back(alphaAt(stored));
    return channels;
  }

  PNGRecipe recipe_;
};

TEST_P(PNGForm, isDecodedToItsValues) {
  const Bytes file = buildPNG(recipe_);
  const auto source = ImageSource::create(file);
  EXPECT_EQ(source->typeIdentifier(), "public.png");
  EXPECT_EQ(source->frameCount(), 1U);
  EXPECT_EQ(source->orientation(), 1);

  const Image image = source->image();
  ASSERT_EQ(image.width, recipe_.width);
  ASSERT_EQ(image.height, recipe_.height);
  EXPECT_EQ(image.bitsPerComponent, isDeep() ? 16 : 8);
  EXPECT_EQ(image.alpha, hasAlpha() ? AlphaKind::straight : AlphaKind::none);
  EXPECT_EQ(image.bytesPerRow, image.width * image.bytesPerPixel());
  EXPECT_EQ(image.colorSpace,
            ColorSpace::standard(isGray() ? ColorSpace::Model::gray : ColorSpace::Model::rgb));
  EXPECT_EQ(isOpaqueRendering(image), !isGray() && !isDeep() && !hasAlpha());
  ASSERT_EQ(channelCount(image.layout), expectedAt(0, 0).size());
  for (std::size_t y = 0; y < image.height; ++y) {
    for (std::size_t x = 0; x < image.width; ++x) {
      const Pixel pixel = pixelAt(image, x, y);
      const std::vector<std::uint16_t> channels(
          pixel.begin(), pixel.begin() + static_cast<std::ptrdiff_t>(channelCount(image.layout)));
      ASSERT_EQ(channels, expectedAt(x, y)) << x << ", " << y;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, PNGForm, testing::ValuesIn(allForms()), [](const auto& info) {
  const Form& form = info.param;
  return "colorType" + std::to_string(form.colorType) + "depth" + std::to_string(form.bitDepth) +
         (form.hasTransparency ? "transparent" : "") + (form.isInterlaced ? "interlaced" : "");
});

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
                                       .beforeData = {paletteChunk(3)}}));
  EXPECT_EQ(pixelAt(image, 0, 0), (Pixel{0, 0, 0, 255}));
}

TEST(PNGReader, ignoresTransparencyThatStandsBeforeThePalette) {
  const Image image =
      decode(buildPNG({.beforeData = {{"tRNS", {0, 0, 0, 0, 0, 0}}, {"PLTE", {1, 2, 3}}}}));
  EXPECT_EQ(image.alpha, AlphaKind::none);
  EXPECT_EQ(pixelAt(image, 0, 0), (Pixel{0, 0, 0, 255}));
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
  const Bytes file = buildPNG({.colorType = paletteType, .beforeData = {paletteChunk(2)}});
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

TEST(PNGReader, doesNotUnpackTexts) {
  PNGRecipe recipe = smallGradient();
  PNGChunk bomb{"zTXt", {'a', 0, 0}};
  const Bytes stream = zlibStream(Bytes(std::size_t{64} << 20));
  bomb.payload.insert(bomb.payload.end(), stream.begin(), stream.end());
  recipe.beforeData = {bomb, bomb, bomb};
  recipe.afterData = {bomb};
  EXPECT_NO_THROW(decode(buildPNG(recipe)));
}

}  // namespace
}  // namespace orvane::test
