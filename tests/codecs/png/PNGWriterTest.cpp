#include "codecs/png/PNGWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdlib>
#include <random>

#include "support/FailingZlib.h"
#include "support/PNGFile.h"
#include "support/TestProfiles.h"

namespace orvane {
namespace {

using test::chunkPayload;
using test::chunkTypes;
using test::inflated;
using test::pngChunks;
using testing::ElementsAre;
using testing::IsEmpty;

using Palette = std::vector<PNGWriter::PaletteEntry>;

Bytes randomBytes(std::size_t count, unsigned limit = 256) {
  std::mt19937 random(1);
  Bytes bytes(count);
  for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random() % limit);
  return bytes;
}

Bytes compressedAt(int level, ByteView bytes) {
  Bytes compressed(compressBound(bytes.size()));
  uLongf size = compressed.size();
  EXPECT_EQ(compress2(compressed.data(), &size, bytes.data(), bytes.size(), level), Z_OK);
  compressed.resize(size);
  return compressed;
}

TEST(PNGWriter, beginsEveryFileWithTheSignature) {
  EXPECT_THAT(PNGWriter::pngSignature, ElementsAre(137, 80, 78, 71, 13, 10, 26, 10));
}

TEST(PNGWriter, writesNumbersHighByteFirst) {
  Bytes file{7};
  PNGWriter::appendUInt32BE(file, 0x01FE03A4);
  EXPECT_THAT(file, ElementsAre(7, 0x01, 0xFE, 0x03, 0xA4));
}

TEST(PNGWriter, framesAChunkWithItsLengthAndCRC) {
  Bytes file{1, 2};
  const Bytes payload = randomBytes(1000);
  PNGWriter::appendPNGChunk(file, "teSt", payload);
  Bytes expected = test::pngChunk({"teSt", payload});
  expected.insert(expected.begin(), {1, 2});
  EXPECT_EQ(file, expected);
}

TEST(PNGWriter, framesAnEmptyChunk) {
  Bytes file;
  PNGWriter::appendPNGChunk(file, "IEND", {});
  EXPECT_THAT(file, ElementsAre(0, 0, 0, 0, 'I', 'E', 'N', 'D', 0xAE, 0x42, 0x60, 0x82));
}

TEST(PNGWriter, compressesHarderUpToTwoMebibytes) {
  constexpr std::size_t limit = 2'097'152;
  const Bytes bytes = randomBytes(limit + 1);
  const ByteView atLimit = ByteView(bytes).first(limit);
  EXPECT_TRUE(PNGWriter::zlibCompress(atLimit) == compressedAt(9, atLimit));
  EXPECT_TRUE(PNGWriter::zlibCompress(bytes) == compressedAt(6, bytes));
  EXPECT_FALSE(compressedAt(6, bytes) == compressedAt(9, bytes));
}

TEST(PNGWriter, compressesNothingToAnEmptyStream) {
  EXPECT_THAT(inflated(PNGWriter::zlibCompress({})), IsEmpty());
}

TEST(PNGWriter, appendsNoProfileChunkForAnAbsentOrEmptyProfile) {
  Bytes file{9};
  PNGWriter::appendICCProfileIfPresent(file, std::nullopt);
  PNGWriter::appendICCProfileIfPresent(file, ByteView());
  EXPECT_THAT(file, ElementsAre(9));
}

TEST(PNGWriter, appendsTheProfileUnderItsNameCompressed) {
  const Bytes profile = test::displayP3Profile();
  Bytes file;
  PNGWriter::appendICCProfileIfPresent(file, profile);
  Bytes payload{'I', 'C', 'C', ' ', 'p', 'r', 'o', 'f', 'i', 'l', 'e', 0, 0};
  const Bytes stream = compressedAt(9, profile);
  payload.insert(payload.end(), stream.begin(), stream.end());
  EXPECT_EQ(file, test::pngChunk({"iCCP", payload}));
}

TEST(PNGWriter, reportsThatZlibDoesNotCompressAsAnEncodingThatFailed) {
  const test::FailingZlib zlib(1);
  try {
    PNGWriter::zlibCompress(Bytes{1, 2, 3});
    FAIL();
  } catch (const ZlibError& error) {
    EXPECT_EQ(error.errorCase(), ZlibError::Case::compressionFailed);
    EXPECT_EQ(error.localizedDescription(), "Échec de l'encodage au format PNG.");
  }
}

TEST(PNGWriter, appendsNoProfileChunkThatCannotBeCompressed) {
  const test::FailingZlib zlib(1);
  Bytes file{9};
  EXPECT_THROW(PNGWriter::appendICCProfileIfPresent(file, test::displayP3Profile()), ZlibError);
  EXPECT_THAT(file, ElementsAre(9));
}

// Indexed files

TEST(PNGWriter, writesTheChunksOfAnIndexedFileInOrder) {
  const Bytes indices{0, 1};
  const Palette opaque{{1, 2, 3, 255}, {4, 5, 6, 255}};
  const Palette translucent{{1, 2, 3, 255}, {4, 5, 6, 254}};
  const Bytes profile = test::displayP3Profile();
  const auto types = [&](const Palette& palette, std::optional<ByteView> icc) {
    return chunkTypes(pngChunks(PNGWriter::writeIndexedPNG(2, 1, indices, palette, icc)));
  };
  EXPECT_EQ(types(opaque, std::nullopt), "IHDR PLTE IDAT IEND");
  EXPECT_EQ(types(opaque, ByteView()), "IHDR PLTE IDAT IEND");
  EXPECT_EQ(types(opaque, profile), "IHDR iCCP PLTE IDAT IEND");
  EXPECT_EQ(types(translucent, std::nullopt), "IHDR PLTE tRNS IDAT IEND");
  EXPECT_EQ(types(translucent, profile), "IHDR iCCP PLTE tRNS IDAT IEND");
}

TEST(PNGWriter, writesATransparencyOfEveryEntryWhenSomeEntryIsNotOpaque) {
  const Palette palette{{1, 2, 3, 255}, {4, 5, 6, 254}, {7, 8, 9, 255}, {0, 0, 0, 255}};
  const auto chunks = pngChunks(PNGWriter::writeIndexedPNG(1, 1, Bytes{0}, palette, std::nullopt));
  EXPECT_THAT(chunkPayload(chunks, "PLTE"), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 0, 0));
  EXPECT_THAT(chunkPayload(chunks, "tRNS"), ElementsAre(255, 254, 255, 255));
}

TEST(PNGWriter, keepsDepthEightForTwoColors) {
  const Bytes indices{0, 1, 1,  //
                      1, 0, 1};
  const Palette palette{{0, 0, 0, 255}, {255, 255, 255, 255}};
  const auto chunks = pngChunks(PNGWriter::writeIndexedPNG(3, 2, indices, palette, std::nullopt));
  EXPECT_THAT(chunkPayload(chunks, "IHDR"), ElementsAre(0, 0, 0, 3, 0, 0, 0, 2, 8, 3, 0, 0, 0));
  EXPECT_THAT(inflated(chunkPayload(chunks, "IDAT")), ElementsAre(0, 0, 1, 1, 0, 1, 0, 1));
}

TEST(PNGWriter, writesExactlyTheFileThatItsPartsMakeUp) {
  constexpr std::size_t width = 300, height = 7;
  const Bytes indices = randomBytes(width * height, 200);
  const Bytes profile = test::adobeRGBProfile();
  Palette palette(200);
  Bytes colors, alphas, rows;
  for (std::size_t i = 0; i < palette.size(); ++i) {
    const auto v = static_cast<std::uint8_t>(i);
    palette[i] = {v, static_cast<std::uint8_t>(v * 3), static_cast<std::uint8_t>(255 - v), v};
    colors.insert(colors.end(), {palette[i].r, palette[i].g, palette[i].b});
    alphas.push_back(v);
  }
  for (std::size_t i = 0; i < indices.size(); ++i) {
    if (i % width == 0) rows.push_back(0);
    rows.push_back(indices[i]);
  }
  Bytes named{'I', 'C', 'C', ' ', 'p', 'r', 'o', 'f', 'i', 'l', 'e', 0, 0};
  const Bytes stream = compressedAt(9, profile);
  named.insert(named.end(), stream.begin(), stream.end());

  Bytes expected{137, 80, 78, 71, 13, 10, 26, 10};
  for (const test::PNGChunk& chunk :
       {test::PNGChunk{"IHDR", {0, 0, 1, 44, 0, 0, 0, 7, 8, 3, 0, 0, 0}},
        test::PNGChunk{"iCCP", named}, test::PNGChunk{"PLTE", colors},
        test::PNGChunk{"tRNS", alphas}, test::PNGChunk{"IDAT", compressedAt(9, rows)},
        test::PNGChunk{"IEND", {}}}) {
    const Bytes bytes = test::pngChunk(chunk);
    expected.insert(expected.end(), bytes.begin(), bytes.end());
  }
  EXPECT_TRUE(PNGWriter::writeIndexedPNG(width, height, indices, palette, profile) == expected);
}

TEST(PNGWriter, writesIndexedFilesThatOtherReadersUnderstand) {
  constexpr std::size_t width = 65, height = 33;
  const Bytes indices = randomBytes(width * height, 3);
  const Palette palette{{255, 0, 10, 255}, {0, 0, 0, 0}, {4, 250, 6, 77}};
  const auto pixels =
      test::readPNG(PNGWriter::writeIndexedPNG(width, height, indices, palette, std::nullopt));
  ASSERT_EQ(pixels.width, width);
  ASSERT_EQ(pixels.height, height);
  for (std::size_t i = 0; i < indices.size(); ++i) {
    const PNGWriter::PaletteEntry read{pixels.rgba[i * 4], pixels.rgba[i * 4 + 1],
                                       pixels.rgba[i * 4 + 2], pixels.rgba[i * 4 + 3]};
    ASSERT_EQ(read, palette[indices[i]]) << "pixel " << i;
  }
}

// Row filters

struct FilteredRow {
  Bytes bytes;
  std::int64_t cost = 0;
};

/// PNG clause 9, as it is written there.
FilteredRow filteredAsInTheStandard(PNGWriter::Filter filter, const Bytes& row,
                                    const Bytes& previous, std::size_t bpp) {
  FilteredRow filtered;
  for (std::size_t x = 0; x < row.size(); ++x) {
    const int a = x < bpp ? 0 : row[x - bpp];
    const int b = previous[x];
    const int c = x < bpp ? 0 : previous[x - bpp];
    int prediction = 0;
    if (filter == PNGWriter::Filter::sub) prediction = a;
    if (filter == PNGWriter::Filter::up) prediction = b;
    if (filter == PNGWriter::Filter::average) prediction = (a + b) / 2;
    if (filter == PNGWriter::Filter::paeth) {
      const int p = a + b - c;
      const int pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
      prediction = pa <= pb && pa <= pc ? a : pb <= pc ? b : c;
    }
    const int value = (row[x] - prediction + 256) % 256;
    filtered.bytes.push_back(static_cast<std::uint8_t>(value));
    filtered.cost += value < 128 ? value : 256 - value;
  }
  return filtered;
}

TEST(PNGWriter, numbersTheFiltersAsTheStandardDoes) {
  std::vector<int> codes;
  for (const PNGWriter::Filter filter : PNGWriter::allFilters) {
    codes.push_back(static_cast<int>(filter));
  }
  EXPECT_THAT(codes, ElementsAre(0, 1, 2, 3, 4));
  EXPECT_EQ(PNGWriter::Filter::paeth, PNGWriter::Filter{4});
}

TEST(PNGWriter, filtersRowsOfAnyLengthAsTheStandardSays) {
  for (const std::size_t bpp : {1u, 3u, 4u}) {
    for (const std::size_t count :
         {0u, 1u, 2u, 3u, 4u, 5u, 15u, 16u, 17u, 33u, 255u, 256u, 257u, 1000u}) {
      const Bytes bytes = randomBytes(count * 2);
      const Bytes row(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
      const Bytes previous(bytes.begin() + static_cast<std::ptrdiff_t>(count), bytes.end());
      for (const PNGWriter::Filter filter : PNGWriter::allFilters) {
        const FilteredRow expected = filteredAsInTheStandard(filter, row, previous, bpp);
        Bytes into(count);
        const auto cost =
            PNGWriter::apply(filter, row.data(), previous.data(), count, bpp, into.data());
        ASSERT_EQ(into, expected.bytes)
            << "filter " << static_cast<int>(filter) << ", " << count << " bytes, bpp " << bpp;
        ASSERT_EQ(cost, expected.cost);
      }
    }
  }
}

TEST(PNGWriter, predictsPaethForEveryKindOfNeighbourhood) {
  constexpr int levels[]{0, 1, 2, 100, 127, 128, 129, 200, 254, 255};
  for (const int a : levels) {
    for (const int b : levels) {
      for (const int c : levels) {
        const Bytes row{static_cast<std::uint8_t>(a), 50};
        const Bytes previous{static_cast<std::uint8_t>(c), static_cast<std::uint8_t>(b)};
        Bytes into(2);
        PNGWriter::apply(PNGWriter::Filter::paeth, row.data(), previous.data(), 2, 1, into.data());
        ASSERT_EQ(into, filteredAsInTheStandard(PNGWriter::Filter::paeth, row, previous, 1).bytes)
            << a << ' ' << b << ' ' << c;
      }
    }
  }
}

TEST(PNGWriter, predictsTheFirstPixelOfAPaethRowFromAboveOnly) {
  const Bytes row{10, 20, 30, 40, 50, 60, 70, 80};
  const Bytes previous{1, 25, 3, 255, 5, 6, 7, 8};
  Bytes into(8);
  PNGWriter::apply(PNGWriter::Filter::paeth, row.data(), previous.data(), 8, 4, into.data());
  EXPECT_THAT(Bytes(into.begin(), into.begin() + 4), ElementsAre(9, 251, 27, 41));
}

TEST(PNGWriter, measuresCostAsSignedMagnitude) {
  const auto cost = [](const Bytes& row) {
    const Bytes previous(row.size());
    Bytes into(row.size());
    return PNGWriter::apply(PNGWriter::Filter::none, row.data(), previous.data(), row.size(), 1,
                            into.data());
  };
  EXPECT_EQ(cost({0}), 0);
  EXPECT_EQ(cost({127}), 127);
  EXPECT_EQ(cost({128}), 128);
  EXPECT_EQ(cost({129}), 127);
  EXPECT_EQ(cost({255}), 1);
  EXPECT_EQ(cost(Bytes(100'000, 128)), 12'800'000);
}

// Programming errors

TEST(PNGWriterDeathTest, stopsAtSizesThatNoFileCanHold) {
  constexpr std::size_t tooMuch = std::size_t{1} << 32;
  const Palette palette{{0, 0, 0, 255}};
  EXPECT_DEATH(PNGWriter::writeIndexedPNG(tooMuch, 0, {}, palette, std::nullopt), "");
  EXPECT_DEATH(PNGWriter::writeIndexedPNG(0, tooMuch, {}, palette, std::nullopt), "");
  EXPECT_DEATH(PNGWriter::writeIndexedPNG(2, 2, Bytes{1, 2, 3}, palette, std::nullopt), "");
  Bytes file;
  const ByteView endless(PNGWriter::pngSignature.data(), tooMuch);  // its length is all that counts
  EXPECT_DEATH(PNGWriter::appendPNGChunk(file, "teSt", endless), "");
}

TEST(PNGWriter, takesTheLargestSizesThatAFileCanHold) {
  const auto chunks = pngChunks(PNGWriter::beginPNG(0xFFFFFFFF, 1, 2));
  EXPECT_THAT(chunkPayload(chunks, "IHDR"),
              ElementsAre(255, 255, 255, 255, 0, 0, 0, 1, 8, 2, 0, 0, 0));
}

}  // namespace
}  // namespace orvane
