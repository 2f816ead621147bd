#include <algorithm>
#include <array>
#include <string_view>

#include "BoxTree.h"
#include "Mutation.h"
#include "codecs/ISOBaseMedia.h"
#include "support/BoxBuilder.h"

namespace orvane::fuzz {
namespace {

using Boxes = std::vector<BoxTree>;
using test::bigEndian;

// MARK: Values

/// Identifiers of items and places of properties are small numbers, few of which are in use.
std::uint64_t smallNumber(Random& random) { return random.below(9); }

/// Where readers have their limits.
std::uint64_t edgeNumber(Random& random) {
  constexpr std::array<std::uint64_t, 12> edges{
      0, 1, 2, 64, 0x7F, 0xFF, 0x7FFF, 0x8000, 0xFFFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  return random.oneOf(edges);
}

/// Overwrites a number of 1, 2 or 4 bytes.
void changeNumber(std::string& content, Random& random) {
  const std::size_t size = std::size_t{1} << random.below(3);
  if (content.size() < size) return;
  const std::uint64_t number = random.below(2) == 0 ? smallNumber(random) : edgeNumber(random);
  content.replace(random.below(content.size() - size + 1), size,
                  bigEndian(number, static_cast<int>(size)));
}

// MARK: Items, references, properties

BoxTree* metaBox(Boxes& file) {
  const auto found = std::ranges::find(file, "meta", &BoxTree::type);
  return found == file.end() ? nullptr : &*found;
}

void changeItemType(BoxTree& meta, Random& random) {
  constexpr std::array<std::string_view, 8> types{"hvc1", "av01", "grid", "iden",
                                                  "iovl", "tmap", "Exif", "mime"};
  constexpr std::size_t typeOffset = 8;  // of an entry with an identifier of 16 bits
  BoxTree& items = meta.child("iinf");
  if (items.children.empty()) return;
  std::string& entry = random.oneOf(items.children).content;
  if (entry.size() >= typeOffset + 4) entry.replace(typeOffset, 4, random.oneOf(types));
}

void addReference(BoxTree& meta, Random& random) {
  constexpr std::array<std::string_view, 5> types{"dimg", "auxl", "thmb", "cdsc", "prem"};
  BoxTree& references = meta.child("iref");
  if (references.content.empty()) references.content = bigEndian(0, 4);  // version and flags
  const std::size_t count = 1 + random.below(4);
  std::string content = bigEndian(smallNumber(random), 2) + bigEndian(count, 2);
  for (std::size_t i = 0; i < count; ++i) content += bigEndian(smallNumber(random), 2);
  references.children.push_back({.type = std::string(random.oneOf(types)), .content = content});
}

std::string newProperty(Random& random) {
  const auto side = [&] { return static_cast<std::uint32_t>(16 * smallNumber(random)); };
  const auto small = [&] { return static_cast<int>(smallNumber(random)); };
  switch (random.below(8)) {
    case 0:
      return test::ispe(side(), side());
    case 1:
      return test::ispe(static_cast<std::uint32_t>(edgeNumber(random)), side());
    case 2:
      return test::irot(small());
    case 3:
      return test::imir(small());
    case 4:
      return test::clap(side(), side(), small() - 4, small() - 4);
    case 5:
      return test::fullBox("pixi", 0, std::string(1, '\3') + std::string(3, '\10'));
    case 6:
      return test::fullBox("auxC", 0, std::string("urn:mpeg:hevc:2015:auxid:1") + '\0');
    default:
      return test::box("colr", "nclx" + bigEndian(smallNumber(random), 2) +
                                   bigEndian(smallNumber(random), 2) +
                                   bigEndian(smallNumber(random), 2) + '\x80');
  }
}

/// Appends an association of an item with a property (ISO/IEC 23008-12, 9.3) and counts it.
void addAssociation(BoxTree& properties, std::uint64_t place, Random& random) {
  constexpr std::size_t headerSize = 8;  // version and flags, the count of items
  std::string& associations = properties.child("ipma").content;
  associations.resize(std::max(associations.size(), headerSize));
  ++associations[headerSize - 1];
  associations += bigEndian(smallNumber(random), 2) + bigEndian(1, 1) + bigEndian(place, 1);
}

void addProperty(BoxTree& meta, Random& random) {
  BoxTree& properties = meta.child("iprp");
  Boxes& container = properties.child("ipco").children;
  container.push_back(BoxTree::read(test::view(newProperty(random))).front());
  addAssociation(properties, container.size() & 0x7F, random);
}

void addKnownProperty(BoxTree& meta, Random& random) {
  addAssociation(meta.child("iprp"), smallNumber(random), random);
}

void changePrimaryItem(BoxTree& meta, Random& random) {
  meta.child("pitm").content = bigEndian(0, 4) + bigEndian(smallNumber(random), 2);
}

// MARK: Any box

/// One of the rows of boxes in the tree, most often of the deepest.
Boxes& anyRow(Boxes& row, Random& random) {
  if (row.empty()) return row;
  Boxes& below = random.oneOf(row).children;
  return below.empty() || random.below(4) == 0 ? row : anyRow(below, random);
}

void changeAnyBox(Boxes& file, Random& random) {
  Boxes& row = anyRow(file, random);
  if (row.empty()) return;
  BoxTree& box = random.oneOf(row);
  switch (random.below(4)) {
    case 0:
      changeOrder(row, random);
      break;
    case 1:
      changeNumber(box.content, random);
      break;
    default:
      changeBytes(box.content);
  }
}

void change(Boxes& file, Random& random) {
  constexpr std::array changes{changeItemType, addReference, addProperty, addKnownProperty,
                               changePrimaryItem};
  BoxTree* const meta = metaBox(file);
  if (meta == nullptr || random.below(2) == 0) {
    changeAnyBox(file, random);
  } else {
    random.oneOf(changes)(*meta, random);
  }
}

// MARK: File

/// Item locations and chunk offsets count from the start of the file. So that they stay right, a
/// meta or moov box of another size leaves free space at its place and moves to the end.
std::string written(const Boxes& changed, const Boxes& original) {
  std::string file, moved;
  for (std::size_t i = 0; i < changed.size(); ++i) {
    const std::string after = changed[i].written();
    const std::string before = i < original.size() ? original[i].written() : after;
    const bool isLast = i + 1 == changed.size();
    const bool hasOffsets = changed[i].type == "meta" || changed[i].type == "moov";
    if (isLast || !hasOffsets || before.size() == after.size()) {
      file += after;
    } else {
      file += test::box("free", before.substr(8));
      moved += after;
    }
  }
  return file + moved;
}

bool isMadeOfBoxes(ByteView file) {
  ISOBaseMedia::Cursor cursor(file);
  const auto type = takeBox(cursor).type;
  return type == "ftyp" || type == "JXL ";
}

}  // namespace

std::optional<Bytes> changedBoxes(ByteView file, Random& random) {
  if (!isMadeOfBoxes(file)) return std::nullopt;
  const Boxes original = BoxTree::read(file);
  Boxes changed = original;
  change(changed, random);
  const std::string result = written(changed, original);
  return Bytes(result.begin(), result.end());
}

}  // namespace orvane::fuzz
