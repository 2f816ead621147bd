#include "codecs/ISOBaseMedia.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

namespace orvane {
namespace {

std::string bigEndian(std::uint64_t value, int byteCount) {
  std::string bytes;
  for (int i = byteCount - 1; i >= 0; --i) bytes += static_cast<char>(value >> (8 * i));
  return bytes;
}

std::string box(const std::string& type, const std::string& content) {
  return bigEndian(content.size() + 8, 4) + type + content;
}

std::string fullBox(const std::string& type, int version, const std::string& content) {
  return box(type, bigEndian(static_cast<unsigned>(version), 1) + bigEndian(0, 3) + content);
}

std::string ftyp(const std::string& brands) {
  return box("ftyp", brands.substr(0, 4) + bigEndian(0, 4) + brands.substr(4));
}

std::string infe(int version, std::uint32_t item, const std::string& type) {
  return fullBox("infe", version,
                 bigEndian(item, version < 3 ? 2 : 4) + bigEndian(0, 2) + type + std::string(1, 0));
}

std::string iinf(std::initializer_list<std::string> entries) {
  std::string content = bigEndian(entries.size(), 2);
  for (const std::string& entry : entries) content += entry;
  return fullBox("iinf", 0, content);
}

std::string pitm(std::uint32_t item) { return fullBox("pitm", 0, bigEndian(item, 2)); }

std::string dimg(std::uint32_t from, std::initializer_list<std::uint32_t> to) {
  std::string content = bigEndian(from, 2) + bigEndian(to.size(), 2);
  for (const std::uint32_t item : to) content += bigEndian(item, 2);
  return box("dimg", content);
}

std::string meta(const std::string& boxes) { return fullBox("meta", 0, boxes); }

ByteView view(const std::string& file) {
  return {reinterpret_cast<const std::uint8_t*>(file.data()), file.size()};
}

/// What codes the primary item, or "none".
std::string primary(const std::string& file) {
  return std::string(ISOBaseMedia::primaryItemCoding(view(file)).value_or("none"));
}

TEST(ISOBaseMedia, findsMajorAndCompatibleBrandsButNotTheMinorVersion) {
  const std::string file = box("ftyp", "mif1avisheicmiaf");  // the second is the minor version
  EXPECT_TRUE(ISOBaseMedia::hasBrand(view(file), "mif1"));
  EXPECT_TRUE(ISOBaseMedia::hasBrand(view(file), "heic"));
  EXPECT_TRUE(ISOBaseMedia::hasBrand(view(file), "miaf"));
  EXPECT_FALSE(ISOBaseMedia::hasBrand(view(file), "avis"));
  EXPECT_FALSE(ISOBaseMedia::hasBrand(view(file), "avif"));
}

TEST(ISOBaseMedia, findsNoBrandWhereTheFileDoesNotBeginWithAFileTypeBox) {
  EXPECT_FALSE(ISOBaseMedia::hasBrand(view(box("free", "") + ftyp("avif")), "avif"));
  EXPECT_FALSE(ISOBaseMedia::hasBrand(view("avif"), "avif"));
  EXPECT_FALSE(ISOBaseMedia::hasBrand({}, "avif"));
}

TEST(ISOBaseMedia, tellsThePrimaryItemFromTheOthers) {
  const std::string items = iinf({infe(2, 1, "hvc1"), infe(2, 2, "av01"), infe(2, 3, "Exif")});
  EXPECT_EQ(primary(ftyp("mif1") + meta(pitm(2) + items)), "av01");
  EXPECT_EQ(primary(ftyp("mif1") + meta(items + pitm(1))), "hvc1");
  EXPECT_EQ(primary(ftyp("avif") + meta(pitm(4) + items)), "none");
  EXPECT_EQ(primary(ftyp("avif") + meta(items)), "none");
  EXPECT_EQ(primary(ftyp("avif")), "none");
  EXPECT_EQ(primary(meta(pitm(1) + items)), "none");
}

TEST(ISOBaseMedia, readsTheWideVersionsOfEveryBox) {
  const std::uint32_t grid = 0x10000, tile = 0x10001;
  const std::string wideInfo =
      fullBox("iinf", 1, bigEndian(2, 4) + infe(3, tile, "hvc1") + infe(3, grid, "grid"));
  const std::string widePrimary = fullBox("pitm", 1, bigEndian(grid, 4));
  const std::string wideReferences =
      fullBox("iref", 1, box("dimg", bigEndian(grid, 4) + bigEndian(1, 2) + bigEndian(tile, 4)));
  EXPECT_EQ(primary(ftyp("heic") + meta(wideInfo + widePrimary + wideReferences)), "hvc1");
}

TEST(ISOBaseMedia, passesOverItemEntriesThatHaveNoType) {
  const std::string old = fullBox("infe", 0, bigEndian(1, 2) + bigEndian(0, 2) + "name");
  EXPECT_EQ(primary(ftyp("mif1") + meta(pitm(1) + iinf({old}))), "none");
  EXPECT_EQ(primary(ftyp("mif1") + meta(pitm(1) + iinf({old, infe(2, 1, "av01")}))), "av01");
}

TEST(ISOBaseMedia, followsGridsAndIdentitiesToTheFirstItemThatTheyAreMadeOf) {
  const std::string items = iinf({infe(2, 1, "iden"), infe(2, 2, "grid"), infe(2, 3, "av01"),
                                  infe(2, 4, "hvc1"), infe(2, 5, "iovl")});
  const std::string references =
      fullBox("iref", 0,
              box("thmb", bigEndian(2, 2) + bigEndian(1, 2) + bigEndian(4, 2)) + dimg(1, {2}) +
                  dimg(2, {3, 4}) + dimg(5, {3}));
  EXPECT_EQ(primary(ftyp("mif1") + meta(pitm(2) + items + references)), "av01");
  EXPECT_EQ(primary(ftyp("mif1") + meta(pitm(1) + items + references)), "av01");
  EXPECT_EQ(primary(ftyp("mif1") + meta(pitm(5) + items + references)), "iovl");
}

TEST(ISOBaseMedia, leavesADerivationThatLeadsNowhereAsItIs) {
  const std::string items = iinf({infe(2, 1, "grid"), infe(2, 2, "iden")});
  const auto withReferences = [&](const std::string& references) {
    return primary(ftyp("mif1") + meta(pitm(1) + items + fullBox("iref", 0, references)));
  };
  EXPECT_EQ(withReferences(""), "grid");
  EXPECT_EQ(withReferences(dimg(1, {})), "grid");
  EXPECT_EQ(withReferences(dimg(1, {9})), "grid");
  EXPECT_EQ(withReferences(dimg(1, {1})), "grid");
  EXPECT_EQ(withReferences(dimg(1, {2}) + dimg(2, {2})), "iden");
}

TEST(ISOBaseMedia, readsBoxesWhoseSizeIsWideOrOpen) {
  const std::string boxes = pitm(1) + iinf({infe(2, 1, "av01")});
  const std::string wide = bigEndian(1, 4) + "free" + bigEndian(16 + 5, 8) + "12345";
  const std::string open = bigEndian(0, 4) + "meta" + bigEndian(0, 4) + boxes;
  EXPECT_EQ(primary(ftyp("avif") + wide + meta(boxes)), "av01");
  EXPECT_EQ(primary(ftyp("avif") + open), "av01");
}

TEST(ISOBaseMedia, survivesSizesThatCannotBe) {
  const std::string boxes = meta(pitm(1) + iinf({infe(2, 1, "av01")}));
  const auto lying = [](std::uint64_t size) { return bigEndian(size, 4) + "free"; };
  const auto lyingWide = [](std::uint64_t size) {
    return bigEndian(1, 4) + "free" + bigEndian(size, 8);
  };
  // Smaller than its own header: an empty box. Larger than the file: the rest of it.
  EXPECT_EQ(primary(ftyp("avif") + lying(7) + boxes), "av01");
  EXPECT_EQ(primary(ftyp("avif") + lyingWide(0) + boxes), "av01");
  EXPECT_EQ(primary(ftyp("avif") + lying(0xFFFFFFFF) + boxes), "none");
  EXPECT_EQ(primary(ftyp("avif") + lyingWide(UINT64_MAX) + boxes), "none");
}

TEST(ISOBaseMedia, survivesEveryTruncationAndEveryDamagedByte) {
  const std::string items = iinf({infe(2, 1, "grid"), infe(3, 2, "av01")});
  const std::string file =
      ftyp("avifmif1") + meta(pitm(1) + items + fullBox("iref", 0, dimg(1, {2, 2})));
  ASSERT_EQ(primary(file), "av01");
  for (std::size_t length = 0; length < file.size(); ++length) {
    const std::string answer = primary(file.substr(0, length));
    EXPECT_TRUE(answer == "none" || answer == "grid" || answer == "av01") << answer;
  }
  for (std::size_t at = 0; at < file.size(); ++at) {
    for (const int value : {0, 1, 0x7F, 0xFF}) {
      std::string damaged = file;
      damaged[at] = static_cast<char>(value);
      const std::string answer = primary(damaged);
      EXPECT_EQ(answer.size(), 4u) << answer;
      ISOBaseMedia::hasBrand(view(damaged), "none");
    }
  }
}

}  // namespace
}  // namespace orvane
