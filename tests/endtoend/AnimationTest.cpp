// An animation becomes a still of its first frame, whatever format it comes in and goes to.

#include <gtest/gtest.h>

#include <array>

#include "codecs/ImageSource.h"
#include "platform/graphics/RowRenderer.h"
#include "support/JXLBuilder.h"
#include "support/PNGBuilder.h"
#include "support/RunTool.h"
#include "support/WebPBuilder.h"

namespace orvane {
namespace {

const Image first = test::patchImage(96, 64, ColorSpace::sRGB());
const Image second = test::gradientImage(96, 64);

/// PNG clause 11.3.6.2: a frame as large as the picture, shown for a tenth of a second.
test::PNGChunk frameControl(std::uint32_t sequenceNumber) {
  test::PNGChunk chunk{"fcTL", test::pngIntegers({sequenceNumber, 96, 64, 0, 0})};
  chunk.payload.insert(chunk.payload.end(), {0, 1, 0, 10, 0, 0});
  return chunk;
}

test::PNGRecipe recipeOf(const Image& image) {
  return {.width = 96, .height = 64, .pixelAt = [&image](std::size_t x, std::size_t y) {
            return test::pixelAt(image, x, y);
          }};
}

Bytes animatedPNG() {
  test::PNGChunk secondFrame{"fdAT", test::pngIntegers({2})};
  const Bytes stream = test::zlibStream(test::scanlines(recipeOf(second)));
  secondFrame.payload.insert(secondFrame.payload.end(), stream.begin(), stream.end());
  test::PNGRecipe recipe = recipeOf(first);
  recipe.beforeData = {{"acTL", test::pngIntegers({2, 0})}, frameControl(0)};
  recipe.afterData = {frameControl(1), secondFrame};
  return test::buildPNG(recipe);
}

Bytes animatedWebP() {
  using test::encodeWebP;
  constexpr auto lossless = test::WebPCoding::lossless;
  return test::animateWebP(96, 64, {{encodeWebP(first, lossless)}, {encodeWebP(second, lossless)}});
}

Bytes animatedJXL() { return test::buildJXL(std::array{first, second}); }

TEST(AnimationEndToEnd, becomesAStillOfItsFirstFrame) {
  const test::Tool tool;
  const std::vector<std::pair<std::string, Bytes>> animations{
      {"png.png", animatedPNG()}, {"webp.webp", animatedWebP()}, {"jxl.jxl", animatedJXL()}};
  for (const auto& [name, file] : animations) {
    ASSERT_EQ(ImageSource::create(file)->frameCount(), 2u) << name;
    test::writeFile(tool.folder / name, file);
  }
  for (const ImageFormat format : ImageFormat::allCases) {
    const std::string formatName(format.rawValue());
    const auto run = tool.run({"png.png", "webp.webp", "jxl.jxl", "--output", formatName,
                               "--format", formatName, "--quality", "90"});
    ASSERT_EQ(run.status, 0) << run.output << run.errors;
    for (const std::string base : {"png.", "webp.", "jxl."}) {
      const std::string output = formatName + "/" + base + std::string(format.fileExtension());
      const Bytes bytes = test::readFile(tool.folder / output);
      const auto still = ImageSource::create(bytes);
      EXPECT_EQ(still->frameCount(), 1u) << output;
      const Image image = rendered(still->image(), ColorSpace::sRGB(), 8);
      EXPECT_LT(test::meanDifference(image, first), 4) << output;
      EXPECT_GT(test::meanDifference(image, second), 20) << output;
    }
  }
}

}  // namespace
}  // namespace orvane
