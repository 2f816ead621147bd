#include "codecs/ImageItems.h"

#include <algorithm>
#include <array>
#include <span>

#include "codecs/ItemData.h"
#include "codecs/ItemReferences.h"
#include "codecs/UnreadableImage.h"

namespace orvane {
namespace {

using ISOBaseMedia::Box;
using ISOBaseMedia::Cursor;
using ISOBaseMedia::findBox;
using ISOBaseMedia::identifierSize;

/// Properties that an association can name: their numbers have 15 bits (ISO/IEC 23008-12, 9.3).
constexpr std::size_t maximumProperties = 0x7FFF;

// MARK: Items

std::uint32_t takeIdentifier(Cursor& cursor, std::size_t size) {
  return static_cast<std::uint32_t>(cursor.number(size));
}

/// Takes the bytes of an identifier; none where the box ends before their last.
ByteView takeIdentifierBytes(Cursor& cursor, std::size_t size) {
  const ByteView bytes = cursor.take(size);
  return bytes.size() < size ? ByteView() : bytes;
}

std::uint32_t identifierIn(ByteView bytes) {
  Cursor cursor(bytes);
  return takeIdentifier(cursor, bytes.size());
}

ByteView bytesOfPrimary(ByteView pitm) {
  Cursor cursor(pitm);
  return takeIdentifierBytes(cursor, identifierSize(takeFullBoxHeader(cursor).version, 1));
}

/// A box among the item information entries. Those of the first versions have no type.
struct Entry {
  ByteView box;  ///< with its header
  std::uint32_t item = 0;
  std::string_view type;
};

Entry takeEntry(Cursor& entries) {
  const ByteView rest = entries.rest();
  const Box box = takeBox(entries);
  Entry entry{.box = rest.first(rest.size() - entries.rest().size())};
  Cursor cursor(box.content);
  const int version = takeFullBoxHeader(cursor).version;
  if (box.type != "infe" || version < 2) return entry;
  entry.item = takeIdentifier(cursor, identifierSize(version, 3));
  cursor.take(2);  // item_protection_index
  entry.type = cursor.code();
  return entry;
}

template <class Visit>
void visitEntries(ByteView iinf, Visit visit) {
  Cursor entries(iinf);
  entries.take(identifierSize(takeFullBoxHeader(entries).version, 1));  // their count
  while (!entries.atEnd()) visit(takeEntry(entries));
}

/// Empty when the item has no entry with a type, and for item 0, which stands for nothing.
std::string_view itemType(ByteView iinf, std::uint32_t item) {
  std::string_view found;
  if (item == 0) return found;
  visitEntries(iinf, [&](const Entry& entry) {
    if (entry.item == item && found.empty()) found = entry.type;
  });
  return found;
}

std::uint64_t countIdentities(ByteView iinf) {
  std::uint64_t count = 0;
  visitEntries(iinf, [&](const Entry& entry) { count += entry.type == "iden" ? 1 : 0; });
  return count;
}

/// The first item that `item` is derived from; 0 when there is none.
std::uint32_t firstSource(ByteView iref, std::uint32_t item) {
  Cursor references(iref);
  const std::size_t size = identifierSize(takeFullBoxHeader(references).version, 1);
  while (!references.atEnd()) {
    const Box reference = takeBox(references);
    Cursor cursor(reference.content);
    if (reference.type != "dimg" || takeIdentifier(cursor, size) != item) continue;
    return cursor.number(2) == 0 ? 0 : takeIdentifier(cursor, size);
  }
  return 0;
}

/// Calls `visit(bytes)` for each identifier in the references from and to auxiliary pictures,
/// thumbnails and metadata of an item and in its marks of premultiplied colours.
template <class Visit>
void visitBelonging(ByteView iref, Visit visit) {
  Cursor references(iref);
  const std::size_t size = identifierSize(takeFullBoxHeader(references).version, 1);
  while (!references.atEnd()) {
    const Box reference = takeBox(references);
    constexpr std::array<std::string_view, 4> types{"auxl", "thmb", "cdsc", "prem"};
    if (std::ranges::find(types, reference.type) == types.end()) continue;
    Cursor cursor(reference.content);
    visit(takeIdentifierBytes(cursor, size));
    for (std::uint64_t left = cursor.number(2); left > 0 && !cursor.atEnd(); --left) {
      visit(takeIdentifierBytes(cursor, size));
    }
  }
}

// MARK: Properties

std::vector<Box> propertiesIn(ByteView ipco) {
  std::vector<Box> properties;
  Cursor cursor(ipco);
  while (!cursor.atEnd() && properties.size() < maximumProperties) {
    properties.push_back(takeBox(cursor));
  }
  return properties;
}

/// Calls `visit(item, property)` for each property of each item, in the file's order.
template <class Visit>
void visitAssociations(ByteView iprp, Visit visit) {
  const std::vector<Box> properties = propertiesIn(findBox(iprp, "ipco"));
  for (Cursor boxes(iprp); !boxes.atEnd();) {
    const Box box = takeBox(boxes);
    if (box.type != "ipma") continue;
    Cursor cursor(box.content);
    const auto [version, flags] = takeFullBoxHeader(cursor);
    const bool isWide = (flags & 1) != 0;
    cursor.take(4);  // the count of items
    while (!cursor.atEnd()) {
      const std::uint32_t item = takeIdentifier(cursor, identifierSize(version, 1));
      for (std::uint64_t left = cursor.number(1); left > 0; --left) {
        // Counted from 1, below the bit that says whether the property is essential.
        const std::uint64_t number = cursor.number(isWide ? 2 : 1) & (isWide ? 0x7FFF : 0x7F);
        if (number > 0 && number <= properties.size()) visit(item, properties[number - 1]);
      }
    }
  }
}

ItemReferences::Areas areasOf(ByteView iprp) {
  ItemReferences::Areas areas;
  visitAssociations(iprp, [&](std::uint32_t item, const Box& property) {
    if (property.type != "ispe") return;
    Cursor cursor(property.content);
    cursor.take(4);  // version and flags
    const std::uint64_t width = cursor.number(4);
    areas[item] = width * cursor.number(4);
  });
  return areas;
}

/// Pixels of the picture that a grid makes (ISO/IEC 23008-12, 6.6.2.3.2). The most there can be
/// when its data are too short: libheif 1.15 reads on behind their end.
std::uint64_t canvasOf(ByteView grid) {
  Cursor cursor(grid);
  cursor.take(1);  // version
  const std::size_t sideSize = (cursor.number(1) & 1) != 0 ? 4 : 2;
  cursor.take(2);  // rows and columns
  if (cursor.rest().size() < 2 * sideSize) return UINT64_MAX;
  const std::uint64_t width = cursor.number(sideSize);
  return width * cursor.number(sideSize);
}

void add(const Box& property, TransformativeProperties& to) {
  Cursor cursor(property.content);
  const auto number = [&] { return static_cast<std::uint32_t>(cursor.number(4)); };
  const auto fraction = [&] { return CleanAperture::Fraction{number(), number()}; };
  if (property.type == "clap") to.crop({fraction(), fraction(), fraction(), fraction()});
  if (property.type == "irot") to.turn(static_cast<int>(cursor.number(1) & 3));
  if (property.type == "imir") {
    using Mirror = TransformativeProperties::Mirror;
    to.mirror((cursor.number(1) & 1) != 0 ? Mirror::leftRight : Mirror::topBottom);
  }
}

// MARK: Boxes

/// The content of the next meta box; empty when there is none.
ByteView takeMeta(Cursor& boxes) {
  while (!boxes.atEnd()) {
    const Box box = takeBox(boxes);
    if (box.type == "meta") return box.content;
  }
  return {};
}

// MARK: Changes

/// Writes a big-endian number over all of `bytes`. Throws UnreadableImage when they cannot hold it.
void put(std::span<std::uint8_t> bytes, std::uint64_t value) {
  // Not std::views::reverse, which clang 14 cannot compile with GCC 12's library.
  for (std::size_t at = bytes.size(); at-- > 0;) {
    std::uint8_t& byte = bytes[at];
    byte = static_cast<std::uint8_t>(value);
    value >>= 8;
  }
  if (value != 0) throw UnreadableImage("a number that does not fit");
}

/// The place of `part`, some bytes of `file`, in a copy of the file.
std::span<std::uint8_t> placeIn(Bytes& copy, ByteView file, ByteView part) {
  if (part.empty()) return {};
  return std::span(copy).subspan(static_cast<std::size_t>(part.data() - file.data()), part.size());
}

/// Writes the content of `iinf` without its `count` identity derivations to `out`: what remains
/// moves together, and a free space box, which the new number of entries leaves out, takes the end.
/// Each entry taken out makes room for that box, which is smaller.
void writeWithoutIdentities(ByteView iinf, std::uint64_t count, std::span<std::uint8_t> out) {
  Cursor cursor(iinf);
  const std::size_t countSize = identifierSize(takeFullBoxHeader(cursor).version, 1);
  const std::uint64_t listed = cursor.number(countSize);
  if (listed < count) throw UnreadableImage("a list of fewer items than it holds");
  put(out.subspan(4, countSize), listed - count);
  out = out.subspan(4 + countSize);
  visitEntries(iinf, [&](const Entry& entry) {
    if (entry.type == "iden") return;
    std::ranges::copy(entry.box, out.begin());
    out = out.subspan(entry.box.size());
  });
  put(out.first(4), out.size());
  std::ranges::copy(std::string_view("free"), out.begin() + 4);
}

}  // namespace

ImageItems::ImageItems(ByteView file) : file_(file) {
  if (!ISOBaseMedia::hasFileType(file)) return;
  Cursor boxes(file);
  Cursor meta(takeMeta(boxes));
  hasOtherMeta_ = !takeMeta(boxes).empty();
  takeFullBoxHeader(meta);
  pitm_ = findBox(meta.rest(), "pitm");
  iinf_ = findBox(meta.rest(), "iinf");
  iref_ = findBox(meta.rest(), "iref");
  iprp_ = findBox(meta.rest(), "iprp");
  iloc_ = findBox(meta.rest(), "iloc");
  idat_ = findBox(meta.rest(), "idat");
  primary_ = shown_ = identifierIn(bytesOfPrimary(pitm_));
  while (shown_ != 0 && derivations_.size() < ItemReferences::maximumLevels &&
         itemType(iinf_, shown_) == "iden") {
    const std::uint32_t source = firstSource(iref_, shown_);
    if (itemType(iinf_, source).empty()) break;
    derivations_.push_back(shown_);
    shown_ = source;
  }
}

std::optional<std::string_view> ImageItems::coding() const {
  const std::string_view type = itemType(iinf_, shown_);
  if (type.empty()) return std::nullopt;
  if (type != "grid") return type;
  const std::string_view tileType = itemType(iinf_, firstSource(iref_, shown_));
  return tileType.empty() ? type : tileType;
}

void ImageItems::checkReferences() const {
  // ISO/IEC 14496-12, 8.11.1 allows one. Of several, libheif reads the last.
  if (hasOtherMeta_) throw UnreadableImage("several meta boxes");
  const ItemReferences::Areas areas = areasOf(iprp_);
  ItemReferences(iref_).check(primary_, areas, undecodable(areas));
}

/// Overlays, and grids that make a larger picture than the file says. One whose size the file does
/// not say may be as large as the primary item.
ItemReferences::Items ImageItems::undecodable(const ItemReferences::Areas& areas) const {
  ItemReferences::Items grids, result;
  visitEntries(iinf_, [&](const Entry& entry) {
    if (entry.type == "iovl") result.insert(entry.item);
    if (entry.type == "grid") grids.insert(entry.item);
  });
  if (grids.empty()) return result;
  constexpr std::size_t largestGrid = 12;  // bytes
  for (const auto& [item, data] : ItemData::beginnings(file_, iloc_, idat_, largestGrid)) {
    if (!grids.contains(item)) continue;
    const auto said = areas.find(areas.contains(item) ? item : primary_);
    if (said != areas.end() && canvasOf(data) > said->second) result.insert(item);
  }
  return result;
}

void ImageItems::addTransformations(TransformativeProperties& properties) const {
  for (auto derivation = derivations_.rbegin(); derivation != derivations_.rend(); ++derivation) {
    visitAssociations(iprp_, [&](std::uint32_t item, const Box& property) {
      if (item == *derivation) add(property, properties);
    });
  }
}

Bytes ImageItems::withoutIdentities() const {
  const std::uint64_t count = countIdentities(iinf_);
  if (count == 0) return {};
  Bytes file(file_.begin(), file_.end());
  writeWithoutIdentities(iinf_, count, placeIn(file, file_, iinf_));
  put(placeIn(file, file_, bytesOfPrimary(pitm_)), shown_);
  visitBelonging(iref_, [&](ByteView bytes) {
    if (std::ranges::find(derivations_, identifierIn(bytes)) == derivations_.end()) return;
    put(placeIn(file, file_, bytes), shown_);
  });
  ImageItems(file).checkReferences();
  return file;
}

}  // namespace orvane
