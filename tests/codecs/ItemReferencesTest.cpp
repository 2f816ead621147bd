#include "codecs/ItemReferences.h"

#include <gtest/gtest.h>

#include "codecs/ImageSource.h"
#include "support/BoxBuilder.h"

namespace orvane {
namespace {

using test::reference;

/// Whether the references of a file are refused. The primary item is 1, each item has `area`
/// pixels.
bool isRefused(const std::vector<std::string>& references, std::uint64_t area = 64 * 64) {
  ItemReferences::Areas areas;
  for (std::uint32_t item = 1; item <= 100; ++item) areas[item] = area;
  const std::string iref = test::iref(references);
  try {
    ItemReferences(test::view(iref).subspan(8)).check(1, areas);
    return false;
  } catch (const UnreadableImage&) {
    return true;
  }
}

/// Identity derivations one of the other, `levels` references long.
std::vector<std::string> chain(std::uint32_t levels) {
  std::vector<std::string> references;
  for (std::uint32_t item = 1; item <= levels; ++item) {
    references.push_back(reference("dimg", item, {item + 1}));
  }
  return references;
}

TEST(ItemReferences, acceptWhatPicturesAreMadeOf) {
  EXPECT_FALSE(isRefused({}));
  // A grid of two tiles with alpha for each, an alpha grid of its own, and a thumbnail.
  EXPECT_FALSE(isRefused({reference("dimg", 1, {2, 3}), reference("auxl", 4, {2}),
                          reference("auxl", 5, {3}), reference("dimg", 6, {7, 8}),
                          reference("auxl", 6, {1}), reference("thmb", 9, {1})}));
  // One alpha item for two pictures.
  EXPECT_FALSE(isRefused({reference("auxl", 3, {1, 2})}));
  // A tone-mapped picture of the primary one and its gain map.
  EXPECT_FALSE(isRefused({reference("dimg", 3, {1, 2}), reference("auxl", 2, {1})}));
}

TEST(ItemReferences, refuseACircleOfAnyKindAndWhereverItIs) {
  for (const char* type : {"dimg", "auxl", "thmb"}) {
    EXPECT_TRUE(isRefused({reference(type, 1, {1})})) << type;
    EXPECT_TRUE(isRefused({reference(type, 1, {2}), reference(type, 2, {1})})) << type;
    EXPECT_TRUE(isRefused({reference(type, 7, {8}), reference(type, 8, {9, 7})})) << type;
  }
  EXPECT_TRUE(isRefused({reference("dimg", 1, {2}), reference("auxl", 1, {2})}));
}

TEST(ItemReferences, passOverReferencesThatDecodersDoNotFollow) {
  EXPECT_FALSE(isRefused({reference("cdsc", 1, {1}), reference("prem", 1, {2, 1})}));
}

TEST(ItemReferences, refuseADescentThroughTooManyLevels) {
  EXPECT_FALSE(isRefused(chain(ItemReferences::maximumLevels)));
  EXPECT_TRUE(isRefused(chain(ItemReferences::maximumLevels + 1)));
  EXPECT_TRUE(isRefused(chain(60'000))) << "the stack holds";
}

TEST(ItemReferences, countTheDecodingsOfItemsThatAreReachedInManyWays) {
  // Each item is made of 16 times the next one.
  std::vector<std::string> references;
  for (std::uint32_t item = 1; item <= 5; ++item) {
    references.push_back(reference("dimg", item, std::vector<std::uint32_t>(16, item + 1)));
    EXPECT_EQ(isRefused(references), item > 3) << item;
  }
  // With the one before as image and as alpha.
  std::vector<std::string> pairs;
  for (std::uint32_t item = 1; item <= 24; ++item) {
    pairs.push_back(reference("dimg", item, {item + 1}));
    pairs.push_back(reference("auxl", item + 1, {item}));
  }
  EXPECT_TRUE(isRefused(pairs));
}

TEST(ItemReferences, acceptTheLargestGridWithAlphaAndRefuseMore) {
  const std::vector<std::uint32_t> tiles(65'535, 2);
  ItemReferences::Areas areas{{1, 16384 * 16384}, {2, 64 * 64}, {3, 64 * 64}};
  const std::string iref = test::iref({reference("dimg", 1, tiles), reference("auxl", 3, {2})});
  const ItemReferences references(test::view(iref).subspan(8));
  EXPECT_NO_THROW(references.check(1, areas));
  areas[1] = 1024 * 1024;
  EXPECT_THROW(references.check(1, areas), UnreadableImage);
}

TEST(ItemReferences, refuseMoreThanAllTilesOfAFileCanNeed) {
  const std::vector<std::string> references(
      9, reference("dimg", 1, std::vector<std::uint32_t>(65'535, 2)));
  const std::string iref = test::iref(references);
  EXPECT_THROW(ItemReferences(test::view(iref).subspan(8)), UnreadableImage);
}

TEST(ItemReferences, surviveAreasThatOverflow) {
  const std::string iref = test::iref({reference("dimg", 1, {2, 2, 2, 2})});
  const ItemReferences references(test::view(iref).subspan(8));
  EXPECT_THROW(references.check(1, {{1, 64}, {2, std::uint64_t{1} << 62}}), UnreadableImage);
}

}  // namespace
}  // namespace orvane
