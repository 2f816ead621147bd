#include "codecs/ImageItems.h"

#include <gtest/gtest.h>

#include <string>

#include "codecs/ImageSource.h"
#include "support/BoxBuilder.h"
#include "support/TestImages.h"

namespace orvane {
namespace {

using test::bigEndian;
using test::box;
using test::ftyp;
using test::fullBox;
using test::iinf;
using test::infe;
using test::iprp;
using test::iref;
using test::meta;
using test::pitm;
using test::reference;
using test::view;

/// The coding of the primary item, or "none".
std::string primary(const std::string& file) {
  return std::string(ImageItems(view(file)).coding().value_or("none"));
}

TEST(ImageItems, tellsThePrimaryItemFromTheOthers) {
  const std::string items = iinf({infe(2, 1, "hvc1"), infe(2, 2, "av01"), infe(2, 3, "Exif")});
  EXPECT_EQ(primary(ftyp("mif1") + meta(pitm(2) + items)), "av01");
  EXPECT_EQ(primary(ftyp("mif1") + meta(items + pitm(1))), "hvc1");
  EXPECT_EQ(primary(ftyp("avif") + meta(pitm(4) + items)), "none");
  EXPECT_EQ(primary(ftyp("avif") + meta(items)), "none");
  EXPECT_EQ(primary(ftyp("avif")), "none");
  EXPECT_EQ(primary(meta(pitm(1) + items)), "none");
}

TEST(ImageItems, readsTheWideVersionsOfEveryBox) {
  const std::uint32_t grid = 0x10000, tile = 0x10001;
  const std::string wideInfo =
      fullBox("iinf", 1, bigEndian(2, 4) + infe(3, tile, "hvc1") + infe(3, grid, "grid"));
  const std::string widePrimary = fullBox("pitm", 1, bigEndian(grid, 4));
  const std::string wideReferences =
      fullBox("iref", 1, box("dimg", bigEndian(grid, 4) + bigEndian(1, 2) + bigEndian(tile, 4)));
  EXPECT_EQ(primary(ftyp("heic") + meta(wideInfo + widePrimary + wideReferences)), "hvc1");
}

TEST(ImageItems, passesOverItemEntriesThatHaveNoType) {
  const std::string old = fullBox("infe", 0, bigEndian(1, 2) + bigEndian(0, 2) + "name");
  EXPECT_EQ(primary(ftyp("mif1") + meta(pitm(1) + iinf({old}))), "none");
  EXPECT_EQ(primary(ftyp("mif1") + meta(pitm(1) + iinf({old, infe(2, 1, "av01")}))), "av01");
}

TEST(ImageItems, followsGridsAndIdentitiesToTheFirstItemThatTheyAreMadeOf) {
  const std::string items = iinf({infe(2, 1, "iden"), infe(2, 2, "grid"), infe(2, 3, "av01"),
                                  infe(2, 4, "hvc1"), infe(2, 5, "iovl")});
  const std::string references = fullBox(
      "iref", 0,
      box("thmb", bigEndian(2, 2) + bigEndian(1, 2) + bigEndian(4, 2)) + reference("dimg", 1, {2}) +
          reference("dimg", 2, {3, 4}) + reference("dimg", 5, {3}));
  EXPECT_EQ(primary(ftyp("mif1") + meta(pitm(2) + items + references)), "av01");
  EXPECT_EQ(primary(ftyp("mif1") + meta(pitm(1) + items + references)), "av01");
  EXPECT_EQ(primary(ftyp("mif1") + meta(pitm(5) + items + references)), "iovl");
}

TEST(ImageItems, leavesADerivationThatLeadsNowhereAsItIs) {
  const std::string items = iinf({infe(2, 1, "grid"), infe(2, 2, "iden")});
  const auto withReferences = [&](const std::string& references) {
    return primary(ftyp("mif1") + meta(pitm(1) + items + fullBox("iref", 0, references)));
  };
  EXPECT_EQ(withReferences(""), "grid");
  EXPECT_EQ(withReferences(reference("dimg", 1, {})), "grid");
  EXPECT_EQ(withReferences(reference("dimg", 1, {9})), "grid");
  EXPECT_EQ(withReferences(reference("dimg", 1, {1})), "grid");
  EXPECT_EQ(withReferences(reference("dimg", 1, {2}) + reference("dimg", 2, {2})), "iden");
}

/// A file whose primary item 1 is an identity derivation of 2, and that one of 3, which has a crop
/// of its own.
std::string chainOfIdentities() {
  return ftyp("mif1") +
         meta(pitm(1) + iinf({infe(2, 1, "iden"), infe(2, 2, "iden"), infe(2, 3, "hvc1")}) +
              iref({reference("dimg", 1, {2}), reference("dimg", 2, {3})}) +
              iprp({test::clap(60, 40), test::irot(1), test::clap(20, 30, 20, 10), test::imir(1)},
                   {{1, {0x83, 0x84}}, {2, {0x82}}, {3, {0x81}}}));
}

TEST(ImageItems, followsIdentitiesToTheItemThatIsShown) {
  const std::string file = chainOfIdentities();
  const ImageItems items(view(file));
  EXPECT_EQ(items.shown(), 3u);
  EXPECT_EQ(items.coding(), "hvc1");
  EXPECT_NO_THROW(items.checkReferences());

  const Bytes patched = items.withoutIdentities();
  EXPECT_EQ(patched.size(), file.size());
  EXPECT_EQ(test::primaryItem(patched), 3u);
  EXPECT_TRUE(ImageItems(patched).withoutIdentities().empty());
}

TEST(ImageItems, givesWhatBelongsToTheIdentitiesToTheItemThatIsShown) {
  // Alpha, its mark of premultiplied colours, a thumbnail and metadata.
  const auto belonging = [](std::uint32_t first, std::uint32_t second) {
    return reference("auxl", 4, {first}) + reference("prem", first, {4}) +
           reference("thmb", 5, {9, second}) + reference("cdsc", 6, {second, 3});
  };
  const std::string derivations = reference("dimg", 1, {2}) + reference("dimg", 2, {3});
  const std::string file =
      ftyp("mif1") +
      meta(pitm(1) + iinf({infe(2, 1, "iden"), infe(2, 2, "iden"), infe(2, 3, "hvc1")}) +
           iref({derivations, belonging(1, 2)}));
  const Bytes patched = ImageItems(view(file)).withoutIdentities();
  EXPECT_TRUE(std::string(patched.begin(), patched.end()).ends_with(belonging(3, 3)));
}

TEST(ImageItems, refusesACircleThatTheItemShownInPlaceOfAnIdentityCloses) {
  // The alpha of the identity derivation 1 is a grid of the item that is shown.
  const std::string file =
      ftyp("mif1") +
      meta(pitm(1) + iinf({infe(2, 1, "iden"), infe(2, 2, "hvc1"), infe(2, 3, "grid")}) +
           iref({reference("dimg", 1, {2}), reference("dimg", 3, {2}), reference("auxl", 3, {1})}));
  const ImageItems items(view(file));
  EXPECT_NO_THROW(items.checkReferences());
  EXPECT_THROW(items.withoutIdentities(), UnreadableImage);
}

TEST(ImageItems, takesOutIdentitiesThatAreNotShownToo) {
  const std::string file =
      ftyp("mif1") + meta(pitm(2) + iinf({infe(2, 1, "iden"), infe(2, 2, "hvc1")}) +
                          iref({reference("dimg", 1, {2})}));
  const Bytes patched = ImageItems(view(file)).withoutIdentities();
  EXPECT_EQ(test::primaryItem(patched), 2u);
  EXPECT_TRUE(ImageItems(patched).withoutIdentities().empty());
}

TEST(ImageItems, addsTheTransformationsOfIdentitiesFromTheInnermostOnWithoutTheShownItems) {
  const std::string file = chainOfIdentities();
  TransformativeProperties properties(60, 40);
  ImageItems(view(file)).addTransformations(properties);
  TransformativeProperties expected(60, 40);
  expected.turn(1);
  expected.crop({{20, 1}, {30, 1}, {20, 2}, {10, 2}});
  expected.mirror(TransformativeProperties::Mirror::leftRight);
  EXPECT_EQ(properties.orientation(), expected.orientation());
  const Image picture = test::gradientImage(60, 40);
  const Image got = properties.cropped(picture), want = expected.cropped(picture);
  EXPECT_EQ(got.pixels, want.pixels);
  EXPECT_EQ(got.width, 30u);
  EXPECT_EQ(got.height, 20u);
}

TEST(ImageItems, readsTheWideVersionOfAssociations) {
  const std::string association =
      bigEndian(1, 3) + bigEndian(1, 4) + bigEndian(1, 4) + bigEndian(1, 1) + bigEndian(0x8002, 2);
  const std::string file =
      ftyp("mif1") + meta(pitm(1) + iinf({infe(2, 1, "iden"), infe(2, 2, "hvc1")}) +
                          iref({reference("dimg", 1, {2})}) +
                          box("iprp", box("ipco", test::ispe(9, 9) + test::irot(2)) +
                                          box("ipma", bigEndian(1, 1) + association)));
  TransformativeProperties properties(60, 40);
  ImageItems(view(file)).addTransformations(properties);
  EXPECT_EQ(properties.orientation(), 3);
}

TEST(ImageItems, refusesAnIdentifierThatThePrimaryItemBoxCannotHold) {
  const std::string entries =
      fullBox("iinf", 1, bigEndian(2, 4) + infe(2, 1, "iden") + infe(3, 0x10000, "av01"));
  const std::string references =
      fullBox("iref", 1, box("dimg", bigEndian(1, 4) + bigEndian(1, 2) + bigEndian(0x10000, 4)));
  const std::string file = ftyp("mif1") + meta(pitm(1) + entries + references);
  const ImageItems items(view(file));
  EXPECT_EQ(items.shown(), 0x10000u);
  EXPECT_THROW(items.withoutIdentities(), UnreadableImage);
}

TEST(ImageItems, derivesNothingFromItem0WithoutAPrimaryItem) {
  for (const char* coding : {"hvc1", "av01"}) {
    const std::string boxes =
        iinf({infe(2, 0, "iden"), infe(2, 5, coding)}) + iref({reference("dimg", 0, {5})});
    // The primary item box is absent, lacks its identifier or half of it, or names item 0.
    for (const std::string& last : {std::string(), box("pitm", ""), box("pitm", bigEndian(0, 4)),
                                    box("pitm", bigEndian(0, 5)), pitm(0)}) {
      const std::string file = ftyp("mif1heicavif") + meta(boxes + last);
      const ImageItems items(view(file));
      EXPECT_EQ(items.shown(), 0u);
      EXPECT_EQ(items.coding(), std::nullopt);
      EXPECT_EQ(items.withoutIdentities().size(), file.size());
      EXPECT_THROW(ImageSource::create(view(file)), UnreadableImage);
    }
  }
}

TEST(ImageItems, refusesAListOfFewerItemsThanItHolds) {
  const std::string entries = infe(2, 1, "iden") + infe(2, 2, "hvc1");
  const std::string references = iref({reference("dimg", 1, {2})});
  const auto withCount = [&](int count) {
    return ftyp("heic") +
           meta(pitm(1) + fullBox("iinf", 0, bigEndian(count, 2) + entries) + references);
  };
  const std::string empty = withCount(0), right = withCount(2);
  EXPECT_NO_THROW(ImageItems(view(right)).withoutIdentities());
  EXPECT_THROW(ImageItems(view(empty)).withoutIdentities(), UnreadableImage);
}

TEST(ImageItems, refusesMoreDecodingsThanAPictureOfItsSizeCanNeed) {
  const auto grid = [](std::uint32_t tileSide) {
    return ftyp("mif1") + meta(pitm(1) + iinf({infe(2, 1, "grid"), infe(2, 2, "hvc1")}) +
                               iref({reference("dimg", 1, std::vector<std::uint32_t>(100, 2))}) +
                               iprp({test::ispe(4096, 4096), test::ispe(tileSide, tileSide)},
                                    {{1, {1}}, {2, {2}}}));
  };
  const std::string plain = grid(512), wasteful = grid(4096);
  EXPECT_NO_THROW(ImageItems(view(plain)).checkReferences());
  EXPECT_THROW(ImageItems(view(wasteful)).checkReferences(), UnreadableImage);
}

bool isRefused(const std::string& file) {
  try {
    ImageItems(view(file)).checkReferences();
    return false;
  } catch (const UnreadableImage&) {
    return true;
  }
}

TEST(ImageItems, refusesASecondMetaBox) {
  // libheif 1.15 reads the last, whose items have not been checked.
  const std::string boxes = meta(pitm(1) + iinf({infe(2, 1, "hvc1")}));
  EXPECT_FALSE(isRefused(ftyp("heic") + boxes + box("free", boxes)));
  EXPECT_TRUE(isRefused(ftyp("heic") + boxes + box("free", "") + boxes));
}

TEST(ImageItems, refusesOverlaysThatThePictureIsMadeOf) {
  // libheif 1.15 takes memory for the canvas that the overlay's data claim.
  const auto withReferences = [](const std::vector<std::string>& references) {
    return ftyp("heic") +
           meta(pitm(1) + iinf({infe(2, 1, "hvc1"), infe(2, 2, "iovl")}) + iref(references));
  };
  EXPECT_FALSE(isRefused(withReferences({reference("dimg", 2, {1})})));
  for (const char* type : {"auxl", "thmb"}) {
    EXPECT_TRUE(isRefused(withReferences({reference(type, 2, {1})}))) << type;
  }
  EXPECT_TRUE(isRefused(withReferences({reference("dimg", 1, {2})})));
}

/// A picture of 64 × 64 pixels, item 1, whose alpha is a grid, item 2, of these data.
std::string withAlphaGrid(const std::string& data,
                          const std::vector<test::Association>& associations) {
  const std::string location = bigEndian(0, 2) + bigEndian(1, 2) + bigEndian(2, 2) +
                               bigEndian(1, 2) + bigEndian(0, 2) + bigEndian(1, 2);
  return ftyp("heic") +
         meta(pitm(1) + iinf({infe(2, 1, "hvc1"), infe(2, 2, "grid")}) +
              fullBox("iloc", 1, location) + box("idat", data) + iref({reference("auxl", 2, {1})}) +
              iprp({test::ispe(64, 64)}, associations));
}

TEST(ImageItems, refusesGridsThatMakeALargerPictureThanTheFileSays) {
  const std::string right = test::gridData(2, 2, 64, 64), large = test::gridData(2, 2, 64, 65);
  EXPECT_FALSE(isRefused(withAlphaGrid(right, {{1, {1}}, {2, {1}}})));
  EXPECT_TRUE(isRefused(withAlphaGrid(large, {{1, {1}}, {2, {1}}})));
  // Without a size of its own.
  EXPECT_FALSE(isRefused(withAlphaGrid(right, {{1, {1}}})));
  EXPECT_TRUE(isRefused(withAlphaGrid(large, {{1, {1}}})));
}

TEST(ImageItems, refusesGridsWhoseDataAreCutShort) {
  const std::string data = test::gridData(2, 2, 64, 64);
  for (std::size_t size = 0; size < data.size(); ++size) {
    EXPECT_TRUE(isRefused(withAlphaGrid(data.substr(0, size), {{1, {1}}, {2, {1}}}))) << size;
  }
}

TEST(ImageItems, readsBoxesWhoseSizeIsWideOrOpen) {
  const std::string boxes = pitm(1) + iinf({infe(2, 1, "av01")});
  const std::string wide = bigEndian(1, 4) + "free" + bigEndian(16 + 5, 8) + "12345";
  const std::string open = bigEndian(0, 4) + "meta" + bigEndian(0, 4) + boxes;
  EXPECT_EQ(primary(ftyp("avif") + wide + meta(boxes)), "av01");
  EXPECT_EQ(primary(ftyp("avif") + open), "av01");
}

TEST(ImageItems, survivesSizesThatCannotBe) {
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

/// Asks for everything; what is refused is refused by an UnreadableImage.
void askForEverything(const std::string& file) {
  const ImageItems items(view(file));
  TransformativeProperties properties(60, 40);
  try {
    items.withoutIdentities();
    items.checkReferences();
    items.addTransformations(properties);
  } catch (const UnreadableImage&) {
  }
}

TEST(ImageItems, survivesEveryTruncationAndEveryDamagedByte) {
  const std::string items = iinf({infe(2, 1, "grid"), infe(3, 2, "av01")});
  const std::string grid =
      ftyp("avifmif1") + meta(pitm(1) + items + iref({reference("dimg", 1, {2, 2})}));
  ASSERT_EQ(primary(grid), "av01");
  for (const std::string& file : {grid, chainOfIdentities()}) {
    for (std::size_t length = 0; length < file.size(); ++length) {
      const std::string answer = primary(file.substr(0, length));
      EXPECT_EQ(answer.size(), 4u) << answer;
      askForEverything(file.substr(0, length));
    }
    for (std::size_t at = 0; at < file.size(); ++at) {
      for (const int value : {0, 1, 0x7F, 0xFF}) {
        std::string damaged = file;
        damaged[at] = static_cast<char>(value);
        EXPECT_EQ(primary(damaged).size(), 4u);
        askForEverything(damaged);
      }
    }
  }
}

}  // namespace
}  // namespace orvane
