#include <gtest/gtest.h>

#include "codecs/ImageSource.h"
#include "support/PNGBuilder.h"

namespace orvane::test {
namespace {

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

  /// The pixel that the decoded picture must hold at one place, alpha or filler last.
  std::vector<std::uint16_t> expectedAt(std::size_t x, std::size_t y) const {
    const Pixel stored = recipe_.pixelAt(x, y);
    std::vector<std::uint16_t> channels;
    if (isPalette()) {
      const auto colors = paletteChunk(std::size_t{1} << recipe_.bitDepth).payload;
      channels.assign(colors.begin() + stored[0] * 3, colors.begin() + stored[0] * 3 + 3);
    } else if (isGray()) {
      const std::uint64_t largest = isDeep() ? 65535 : 255;
      const std::uint64_t largestStored = (1U << recipe_.bitDepth) - 1;
      channels = {static_cast<std::uint16_t>(stored[0] * largest / largestStored)};
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

std::string nameOf(const testing::TestParamInfo<Form>& named) {
  const Form& form = named.param;
  return "colorType" + std::to_string(form.colorType) + "depth" + std::to_string(form.bitDepth) +
         (form.hasTransparency ? "transparent" : "") + (form.isInterlaced ? "interlaced" : "");
}

INSTANTIATE_TEST_SUITE_P(All, PNGForm, testing::ValuesIn(allForms()), nameOf);

}  // namespace
}  // namespace orvane::test
