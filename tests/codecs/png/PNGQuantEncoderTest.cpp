#include "codecs/png/PNGQuantEncoder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <omp.h>
#include <zlib.h>

#include <cstdlib>
#include <filesystem>
#include <set>
#include <thread>

#include "picture/ImageProcessingError.h"
#include "support/PNGFile.h"
#include "support/TestBuffers.h"
#include "support/TestProfiles.h"

namespace orvane {
namespace {

using Effort = EncodingPlan::Effort;
using test::chunkPayload;
using test::chunkTypes;
using test::inflated;
using test::pngChunks;
using testing::Each;
using testing::ElementsAre;

LiqAttr attributes(int quality = 100, int speed = 8) {
  LiqAttr attr(liq_attr_create());
  liq_set_quality(attr.get(), 0, quality);
  liq_set_speed(attr.get(), speed);
  return attr;
}

PNGQuantEncoder::QuantizedImage quantized(const RGBABuffer& buffer, const LiqAttr& attr,
                                          float dithering) {
  return PNGQuantEncoder::quantize(attr.get(), buffer.pixels, buffer.width, buffer.height,
                                   dithering);
}

RGBABuffer noisyBuffer(std::size_t width, std::size_t height) {
  return test::bufferOf(test::noisyImage(width, height));
}

RGBABuffer translucentBuffer(std::size_t width, std::size_t height) {
  return test::bufferOf(test::alphaGradientImage(width, height));
}

RGBABuffer uniformBuffer(std::size_t width, std::size_t height, std::uint16_t gray) {
  return test::drawBuffer(width, height, ColorSpace::sRGB(), [&](std::size_t, std::size_t) {
    return test::Pixel{gray, gray, gray, 255};
  });
}

/// Four colours, one of them transparent, in a pattern of squares.
RGBABuffer fourColorBuffer() {
  static constexpr std::array<test::Pixel, 4> colors{
      {{250, 10, 20, 255}, {30, 220, 40, 255}, {20, 50, 230, 128}, {0, 0, 0, 0}}};
  return test::drawBuffer(64, 48, ColorSpace::sRGB(), [](std::size_t x, std::size_t y) {
    return colors[(x / 8 + y / 8 * 3) % 4];
  });
}

// Palette

/// The same calls of the library, in a row.
PNGQuantEncoder::QuantizedImage quantizedByHand(const RGBABuffer& buffer, liq_attr* attr,
                                                float dithering) {
  omp_set_num_threads(1);
  liq_image* image =
      liq_image_create_rgba(attr, buffer.pixels.data(), static_cast<int>(buffer.width),
                            static_cast<int>(buffer.height), 0.0);
  liq_result* result = nullptr;
  EXPECT_EQ(liq_image_quantize(image, attr, &result), LIQ_OK);
  EXPECT_EQ(liq_set_dithering_level(result, dithering), LIQ_OK);
  PNGQuantEncoder::QuantizedImage expected;
  expected.indices.resize(buffer.width * buffer.height);
  EXPECT_EQ(
      liq_write_remapped_image(result, image, expected.indices.data(), expected.indices.size()),
      LIQ_OK);
  const liq_palette* palette = liq_get_palette(result);
  for (unsigned i = 0; i < palette->count; ++i) {
    const liq_color color = palette->entries[i];
    expected.palette.push_back({color.r, color.g, color.b, color.a});
  }
  liq_result_destroy(result);
  liq_image_destroy(image);
  return expected;
}

TEST(PNGQuantEncoder, quantizesAsTheLibraryDoesWithTheCallersSettings) {
  for (const RGBABuffer& buffer : {noisyBuffer(91, 63), translucentBuffer(80, 40)}) {
    for (const int quality : {10, 80}) {
      for (const float dithering : {0.0F, 0.7F}) {
        const auto actual = quantized(buffer, attributes(quality, 4), dithering);
        const auto expected = quantizedByHand(buffer, attributes(quality, 4).get(), dithering);
        EXPECT_EQ(actual.indices, expected.indices) << quality << ' ' << dithering;
        EXPECT_EQ(actual.palette, expected.palette) << quality << ' ' << dithering;
      }
    }
  }
}

TEST(PNGQuantEncoder, dithersAsStronglyAsItIsTold) {
  const RGBABuffer buffer = test::bufferOf(test::gradientImage(120, 80));
  EXPECT_NE(quantized(buffer, attributes(30), 0).indices,
            quantized(buffer, attributes(30), 1).indices);
}

TEST(PNGQuantEncoder, keepsFewColorsAndTheirPaletteShort) {
  const RGBABuffer buffer = fourColorBuffer();
  const auto image = quantized(buffer, attributes(), 0);
  ASSERT_EQ(image.palette.size(), 4u);
  const auto pixels = test::readPNG(PNGWriter::writeIndexedPNG(
      buffer.width, buffer.height, image.indices, image.palette, std::nullopt));
  for (std::size_t at = 0; at < pixels.rgba.size(); ++at) {
    const std::uint8_t alpha = buffer.pixels[at / 4 * 4 + 3];
    if (alpha == 0 && at % 4 != 3) continue;  // what colour nothing has is the library's choice
    // The library works in floating point and may round either way.
    ASSERT_NEAR(pixels.rgba[at], buffer.pixels[at], 1);
  }

  const auto chunks = pngChunks(PNGWriter::writeIndexedPNG(
      buffer.width, buffer.height, image.indices, image.palette, std::nullopt));
  EXPECT_EQ(chunkPayload(chunks, "PLTE").size(), 4u * 3);
  EXPECT_EQ(chunkPayload(chunks, "tRNS").size(), 4u);
}

TEST(PNGQuantEncoder, givesAtMost256Colors) {
  const auto image = quantized(noisyBuffer(200, 150), attributes(), 1);
  EXPECT_LE(image.palette.size(), 256u);
  EXPECT_GT(image.palette.size(), 16u);
  EXPECT_THAT(image.indices, Each(testing::Lt(image.palette.size())));
}

TEST(PNGQuantEncoder, quantizesASinglePixel) {
  const auto image = quantized(uniformBuffer(1, 1, 77), attributes(), 1);
  ASSERT_EQ(image.palette.size(), 1u);
  EXPECT_NEAR(image.palette[0].r, 77, 1);
  EXPECT_EQ(image.palette[0].a, 255);
  EXPECT_THAT(image.indices, ElementsAre(0));
}

std::string errorOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const ImageProcessingError& error) {
    return error.localizedDescription();
  }
  return "none";
}

TEST(PNGQuantEncoder, reportsWhatTheLibraryRefuses) {
  const std::string encodingFailed = "Échec de l'encodage au format PNG.";
  const LiqAttr demanding(liq_attr_create());
  liq_set_max_colors(demanding.get(), 2);
  liq_set_quality(demanding.get(), 99, 100);
  EXPECT_EQ(errorOf([&] { quantized(noisyBuffer(40, 40), demanding, 0); }), encodingFailed);
  EXPECT_EQ(errorOf([] { PNGQuantEncoder::quantize(attributes().get(), {}, 0, 5, 0); }),
            encodingFailed);
}

std::size_t threadCount() {
  using Entries = std::filesystem::directory_iterator;
  return static_cast<std::size_t>(std::distance(Entries("/proc/self/task"), Entries()));
}

TEST(PNGQuantEncoder, startsNoThreadsOfItsOwn) {
  std::size_t before = 0, after = 0;
  std::thread([&] {
    omp_set_num_threads(3);
    before = threadCount();
    quantized(noisyBuffer(300, 200), attributes(80, 3), 1);
    after = threadCount();
  }).join();
  EXPECT_EQ(after, before);
}

TEST(PNGQuantEncoderDeathTest, stopsAtSizesThatTheLibraryCannotTake) {
  constexpr std::size_t tooMuch = std::size_t{1} << 31;
  EXPECT_DEATH(PNGQuantEncoder::quantize(attributes().get(), {}, tooMuch, 0, 0), "");
  EXPECT_DEATH(PNGQuantEncoder::quantize(attributes().get(), {}, 0, tooMuch, 0), "");
  EXPECT_DEATH(PNGQuantEncoder::quantize(attributes().get(), Bytes(15), 2, 2, 0), "");
}

// Truecolour

EncodingPlan planOf(Effort effort) { return {.mode = EncodingPlan::Lossless{}, .effort = effort}; }

Bytes rowsOf(const Bytes& file) { return inflated(chunkPayload(pngChunks(file), "IDAT")); }

/// The filter bytes of a file's rows.
std::vector<int> filtersOf(const Bytes& file, std::size_t rowSize) {
  const Bytes rows = rowsOf(file);
  std::vector<int> filters;
  for (std::size_t at = 0; at < rows.size(); at += rowSize + 1) filters.push_back(rows[at]);
  return filters;
}

int naivePrediction(int filter, int a, int b, int c) {
  const int p = a + b - c;
  const int pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
  const std::array<int, 5> predictions{0, a, b, (a + b) / 2,
                                       pa <= pb && pa <= pc ? a : (pb <= pc ? b : c)};
  return predictions[static_cast<std::size_t>(filter)];
}

/// Filter bytes and filtered rows, one byte at a time: the first filter of least cost, or paeth.
Bytes naiveRows(const RGBABuffer& buffer, bool searches) {
  const std::size_t bpp = buffer.hasAlpha ? 4 : 3;
  const auto raw = [&](std::ptrdiff_t x, std::ptrdiff_t y, std::size_t channel) -> int {
    if (x < 0 || y < 0) return 0;
    const auto pixel = static_cast<std::size_t>(y) * buffer.width + static_cast<std::size_t>(x);
    return buffer.pixels[pixel * 4 + channel];
  };
  Bytes rows;
  for (std::ptrdiff_t y = 0; y < static_cast<std::ptrdiff_t>(buffer.height); ++y) {
    Bytes best;
    int bestCost = 0;
    for (int filter = searches ? 0 : 4; filter < 5; ++filter) {
      Bytes row{static_cast<std::uint8_t>(filter)};
      int cost = 0;
      for (std::ptrdiff_t x = 0; x < static_cast<std::ptrdiff_t>(buffer.width); ++x) {
        for (std::size_t channel = 0; channel < bpp; ++channel) {
          const int prediction = naivePrediction(
              filter, raw(x - 1, y, channel), raw(x, y - 1, channel), raw(x - 1, y - 1, channel));
          row.push_back(static_cast<std::uint8_t>(raw(x, y, channel) - prediction));
          cost += row.back() < 128 ? row.back() : 256 - row.back();
        }
      }
      if (best.empty() || cost < bestCost) {
        best = row;
        bestCost = cost;
      }
    }
    rows.insert(rows.end(), best.begin(), best.end());
  }
  return rows;
}

TEST(PNGQuantEncoder, dropsTheAlphaOfAnOpaqueBuffer) {
  const auto chunks =
      pngChunks(PNGQuantEncoder::encodeLossless(noisyBuffer(5, 4), planOf(Effort::balanced)));
  EXPECT_EQ(chunkTypes(chunks), "IHDR IDAT IEND");
  EXPECT_THAT(chunkPayload(chunks, "IHDR"), ElementsAre(0, 0, 0, 5, 0, 0, 0, 4, 8, 2, 0, 0, 0));
  EXPECT_EQ(inflated(chunkPayload(chunks, "IDAT")).size(), (5u * 3 + 1) * 4);
}

TEST(PNGQuantEncoder, keepsTheAlphaOfABufferThatSaysItHasSome) {
  RGBABuffer buffer = noisyBuffer(5, 4);
  ASSERT_FALSE(buffer.hasAlpha);
  buffer.hasAlpha = true;
  const Bytes file = PNGQuantEncoder::encodeLossless(buffer, planOf(Effort::balanced));
  EXPECT_EQ(chunkPayload(pngChunks(file), "IHDR")[9], 6);
  EXPECT_EQ(rowsOf(file).size(), (5u * 4 + 1) * 4);
  EXPECT_EQ(test::readPNG(file).rgba, Bytes(buffer.pixels.begin(), buffer.pixels.end()));
}

TEST(PNGQuantEncoder, writesFilesThatOtherReadersSeeUnchanged) {
  for (const RGBABuffer& buffer : {noisyBuffer(1, 1), noisyBuffer(67, 35), noisyBuffer(3, 50),
                                   translucentBuffer(67, 35), translucentBuffer(1, 3)}) {
    for (const Effort effort : {Effort::fast, Effort::balanced, Effort::thorough}) {
      const auto pixels = test::readPNG(PNGQuantEncoder::encodeLossless(buffer, planOf(effort)));
      EXPECT_EQ(pixels.width, buffer.width);
      EXPECT_EQ(pixels.height, buffer.height);
      EXPECT_EQ(pixels.rgba, Bytes(buffer.pixels.begin(), buffer.pixels.end()));
    }
  }
}

TEST(PNGQuantEncoder, choosesThePaethFilterForEveryRowWhenFast) {
  for (const RGBABuffer& buffer : {noisyBuffer(40, 30), translucentBuffer(40, 30)}) {
    const Bytes file = PNGQuantEncoder::encodeLossless(buffer, planOf(Effort::fast));
    EXPECT_EQ(rowsOf(file), naiveRows(buffer, false));
  }
}

/// Five bands of rows, each of a kind that another filter suits best.
RGBABuffer mixedBuffer(bool opaque) {
  return test::drawBuffer(60, 50, ColorSpace::sRGB(), [&](std::size_t x, std::size_t y) {
    const std::size_t noise = (x * 7919 + y * 104729 + x * y * 31) % 251;
    const std::array<std::size_t, 5> values{noise % 9 == 0 ? 60u : 0,  // none: specks on black
                                            x * 4 + noise % 2,         // sub: steps along the row
                                            x * x * 83 + y,            // up: steps down the column
                                            100 + noise % 60,          // average: noise
                                            x * x * 11 + y * 40};      // paeth: both
    const auto v = static_cast<std::uint16_t>(values[y / 10] % 256);
    return test::Pixel{v, static_cast<std::uint16_t>(v / 2), static_cast<std::uint16_t>(v / 3),
                       static_cast<std::uint16_t>(opaque ? 255 : 1 + v * 3 / 4)};
  });
}

TEST(PNGQuantEncoder, choosesTheCheapestFilterOfEachRowOtherwise) {
  for (const RGBABuffer& buffer : {mixedBuffer(true), mixedBuffer(false), noisyBuffer(41, 30)}) {
    for (const Effort effort : {Effort::balanced, Effort::thorough}) {
      const Bytes file = PNGQuantEncoder::encodeLossless(buffer, planOf(effort));
      EXPECT_EQ(rowsOf(file), naiveRows(buffer, true));
    }
  }
  const auto filters = filtersOf(
      PNGQuantEncoder::encodeLossless(mixedBuffer(true), planOf(Effort::thorough)), 60 * 3);
  EXPECT_EQ(std::set<int>(filters.begin(), filters.end()), (std::set<int>{0, 1, 2, 3, 4}));
}

TEST(PNGQuantEncoder, keepsTheEarlierOfEquallyCheapFilters) {
  const EncodingPlan plan = planOf(Effort::balanced);
  EXPECT_THAT(filtersOf(PNGQuantEncoder::encodeLossless(uniformBuffer(9, 4, 0), plan), 27),
              ElementsAre(0, 0, 0, 0));
  EXPECT_THAT(filtersOf(PNGQuantEncoder::encodeLossless(uniformBuffer(9, 4, 128), plan), 27),
              ElementsAre(1, 2, 2, 2));
}

TEST(PNGQuantEncoder, compressesLargePicturesAtTheLowerLevel) {
  const auto zlibHeaderOf = [](std::size_t width, std::size_t height) {
    const Bytes file =
        PNGQuantEncoder::encodeLossless(uniformBuffer(width, height, 9), planOf(Effort::fast));
    const Bytes stream = chunkPayload(pngChunks(file), "IDAT");
    return stream[0] * 256 + stream[1];
  };
  // 2 MiB of filtered rows, of 2048 bytes each: 682 pixels and a filter byte make 2047.
  EXPECT_EQ(zlibHeaderOf(682, 1024), 0x78DA);
  EXPECT_EQ(zlibHeaderOf(682, 1025), 0x789C);
}

TEST(PNGQuantEncoder, embedsTheProfileOfASpaceThatReadersDoNotAssume) {
  const ColorSpacePtr space = ColorSpace::fromICC(test::displayP3Profile(), ColorSpace::Model::rgb);
  const RGBABuffer buffer = test::bufferOf(test::patchImage(30, 20, space));
  const auto chunks = pngChunks(PNGQuantEncoder::encodeLossless(buffer, planOf(Effort::balanced)));
  EXPECT_EQ(chunkTypes(chunks), "IHDR iCCP IDAT IEND");
  const Bytes payload = chunkPayload(chunks, "iCCP");
  const std::string name = "ICC profile";
  ASSERT_EQ(std::string(payload.begin(), payload.begin() + 13), name + std::string(2, '\0'));
  EXPECT_EQ(inflated(ByteView(payload).subspan(13)), test::displayP3Profile());
}

TEST(PNGQuantEncoder, writesExactlyTheFileThatItsPartsMakeUp) {
  const RGBABuffer buffer = mixedBuffer(false);
  const Bytes rows = naiveRows(buffer, true);
  Bytes stream(compressBound(rows.size()));
  uLongf size = stream.size();
  ASSERT_EQ(compress2(stream.data(), &size, rows.data(), rows.size(), 9), Z_OK);
  stream.resize(size);

  Bytes expected{137, 80, 78, 71, 13, 10, 26, 10};
  for (const test::PNGChunk& chunk :
       {test::PNGChunk{"IHDR", {0, 0, 0, 60, 0, 0, 0, 50, 8, 6, 0, 0, 0}},
        test::PNGChunk{"IDAT", stream}, test::PNGChunk{"IEND", {}}}) {
    const Bytes bytes = test::pngChunk(chunk);
    expected.insert(expected.end(), bytes.begin(), bytes.end());
  }
  EXPECT_EQ(PNGQuantEncoder::encodeLossless(buffer, planOf(Effort::thorough)), expected);
}

}  // namespace
}  // namespace orvane
