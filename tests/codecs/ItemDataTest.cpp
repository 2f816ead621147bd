#include "codecs/ItemData.h"

#include <gtest/gtest.h>

#include "support/BoxBuilder.h"

namespace orvane {
namespace {

using test::bigEndian;
using test::fullBox;
using test::view;

/// The beginnings of the items of a file "0123456789" with item data "abcdef", as text.
std::vector<std::pair<std::uint32_t, std::string>> beginnings(const std::string& iloc,
                                                              std::size_t count = 4) {
  const std::string file = "0123456789", idat = "abcdef";
  std::vector<std::pair<std::uint32_t, std::string>> result;
  for (const auto& [item, bytes] :
       ItemData::beginnings(view(file), view(iloc).subspan(8), view(idat), count)) {
    result.emplace_back(item, std::string(bytes.begin(), bytes.end()));
  }
  return result;
}

using Texts = std::vector<std::pair<std::uint32_t, std::string>>;

/// Offsets and lengths of one byte, and base offsets of none.
const std::string plainSizes = bigEndian(0x1100, 2);

std::string extent(int offset, int length) { return bigEndian(offset, 1) + bigEndian(length, 1); }

/// An entry of version 1: of the file (0) or of the item data (1).
std::string entry(int item, int method, const std::vector<std::string>& extents) {
  std::string result =
      bigEndian(item, 2) + bigEndian(method, 2) + bigEndian(0, 2) + bigEndian(extents.size(), 2);
  for (const std::string& each : extents) result += each;
  return result;
}

std::string iloc(const std::vector<std::string>& entries) {
  std::string content = plainSizes + bigEndian(entries.size(), 2);
  for (const std::string& each : entries) content += each;
  return fullBox("iloc", 1, content);
}

TEST(ItemData, liesInTheFileOrInTheItemDataBox) {
  EXPECT_EQ(beginnings(iloc({entry(7, 0, {extent(2, 3)}), entry(8, 1, {extent(1, 9)}),
                             entry(9, 2, {extent(0, 1)})})),
            (Texts{{7, "234"}, {8, "bcde"}, {9, ""}}));
}

TEST(ItemData, isPutTogetherFromItsExtents) {
  EXPECT_EQ(beginnings(iloc({entry(1, 0, {extent(8, 1), extent(0, 2), extent(5, 5)})})),
            (Texts{{1, "8015"}}));
}

TEST(ItemData, reachesToTheEndWithoutALength) {
  EXPECT_EQ(beginnings(iloc({entry(1, 0, {extent(8, 0)})})), (Texts{{1, "89"}}));
}

TEST(ItemData, isFoundByEveryVersionOfTheBox) {
  const std::string version0 =
      fullBox("iloc", 0,
              bigEndian(0x4440, 2) + bigEndian(1, 2) + bigEndian(3, 2) + bigEndian(0, 2) +
                  bigEndian(2, 4) + bigEndian(1, 2) + bigEndian(4, 4) + bigEndian(1, 4));
  EXPECT_EQ(beginnings(version0), (Texts{{3, "6"}}));
  const std::string version2 =
      fullBox("iloc", 2,
              bigEndian(0x0404, 2) + bigEndian(1, 4) + bigEndian(0x10000, 4) + bigEndian(1, 2) +
                  bigEndian(0, 2) + bigEndian(1, 2) + bigEndian(9, 4) + bigEndian(2, 4));
  EXPECT_EQ(beginnings(version2), (Texts{{0x10000, "ab"}}));
}

TEST(ItemData, isShortWhereTheFileOrTheBoxEnds) {
  EXPECT_EQ(beginnings(iloc({entry(1, 0, {extent(9, 4)}), entry(2, 0, {extent(200, 4)})})),
            (Texts{{1, "9"}, {2, ""}}));
  const std::string whole = iloc({entry(1, 0, {extent(2, 3), extent(5, 5)})});
  for (std::size_t size = 8; size < whole.size(); ++size) {
    for (const auto& [item, text] : beginnings(whole.substr(0, size))) EXPECT_LE(text.size(), 4u);
  }
}

TEST(ItemData, takesNoTimeForExtentsWithoutFields) {
  std::string content = bigEndian(0, 2) + bigEndian(50'000, 2);
  for (int item = 0; item < 50'000; ++item) {
    content += bigEndian(item, 2) + bigEndian(0, 2) + bigEndian(0xFFFF, 2);
  }
  EXPECT_EQ(beginnings(fullBox("iloc", 0, content)).size(), 50'000u);
}

}  // namespace
}  // namespace orvane
