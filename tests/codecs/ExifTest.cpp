#include "codecs/Exif.h"

#include <gtest/gtest.h>

#include <random>

#include "support/JPEGBuilder.h"

namespace orvane {
namespace {

using test::ByteOrder;

// The types of TIFF 6.0.
constexpr int byteType = 1;
constexpr int textType = 2;
constexpr int shortType = 3;
constexpr int longType = 4;
constexpr int signedByteType = 6;
constexpr int signedShortType = 8;
constexpr int signedLongType = 9;

TEST(Exif, readsTheOrientationInBothByteOrdersAndTypes) {
  for (const std::uint32_t orientation : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u}) {
    for (const ByteOrder order : {ByteOrder::little, ByteOrder::big}) {
      for (const int type :
           {byteType, shortType, longType, signedByteType, signedShortType, signedLongType}) {
        EXPECT_EQ(Exif::orientation(test::exifBlock(orientation, order, type)),
                  static_cast<int>(orientation));
      }
    }
  }
}

TEST(Exif, givesWhateverNumberStandsThere) {
  EXPECT_EQ(Exif::orientation(test::exifBlock(0)), 0);
  EXPECT_EQ(Exif::orientation(test::exifBlock(9)), 9);
  EXPECT_EQ(Exif::orientation(test::exifBlock(65535)), 65535);
}

TEST(Exif, takesTheBlockWithItsIdentifierToo) {
  EXPECT_EQ(Exif::orientation(test::exifSegment(6).data), 6);
}

TEST(Exif, isUprightWhereNothingSaysOtherwise) {
  EXPECT_EQ(Exif::orientation({}), 1);
  EXPECT_EQ(Exif::orientation(Bytes{'E', 'x', 'i', 'f', 0, 0}), 1);
  EXPECT_EQ(Exif::orientation(Bytes(200, 'x')), 1);
  EXPECT_EQ(Exif::orientation(test::exifBlock(6, ByteOrder::big, textType)), 1);
  Bytes otherTag = test::exifBlock(6);
  otherTag[11] = 0x0F;  // 0x010F is the maker's name
  EXPECT_EQ(Exif::orientation(otherTag), 1);
}

TEST(Exif, isUprightForEveryBlockThatEndsBeforeTheValue) {
  const Bytes block = test::exifBlock(6);
  const std::size_t endOfValue = 20;
  for (std::size_t size = 0; size < endOfValue; ++size) {
    EXPECT_EQ(Exif::orientation(ByteView(block).first(size)), 1) << size;
  }
}

TEST(Exif, survivesAnyBytes) {
  std::mt19937 random(7);
  const Bytes whole = test::exifBlock(6, ByteOrder::little);
  for (int round = 0; round < 3000; ++round) {
    Bytes block = whole;
    block.resize(block.size() + random() % 100);
    for (unsigned changes = random() % 8 + 1; changes > 0; --changes) {
      block[random() % block.size()] = static_cast<std::uint8_t>(random());
    }
    Exif::orientation(block);
  }
}

}  // namespace
}  // namespace orvane
