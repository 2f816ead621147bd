#include "codecs/ImageItems.h"

#include <algorithm>
#include <ranges>

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

std::size_t identifierSizeOfPrimary(ByteView pitm) {
  Cursor cursor(pitm);
  return identifierSize(takeFullBoxHeader(cursor).version, 1);
}

std::uint32_t primaryIdentifier(ByteView pitm) {
  Cursor cursor(pitm);
  cursor.take(4);  // version and flags
  return takeIdentifier(cursor, identifierSizeOfPrimary(pitm));
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

/// Empty when the item has no entry with a type.
std::string_view itemType(ByteView iinf, std::uint32_t item) {
  std::string_view found;
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

// MARK: Changes

/// Writes a big-endian number of that many bytes.
void put(std::uint8_t* at, std::uint64_t value, std::size_t byteCount) {
  for (; byteCount > 0; value >>= 8) at[--byteCount] = static_cast<std::uint8_t>(value);
}

/// Writes the content of `iinf` without its `count` identity derivations to `out`: what remains
/// moves together, and a free space box, which the new number of entries leaves out, takes the end.
void writeWithoutIdentities(ByteView iinf, std::uint64_t count, std::uint8_t* out) {
  std::uint8_t* const end = out + iinf.size();
  Cursor cursor(iinf);
  const std::size_t countSize = identifierSize(takeFullBoxHeader(cursor).version, 1);
  put(out + 4, cursor.number(countSize) - count, countSize);
  out += 4 + countSize;
  visitEntries(iinf, [&](const Entry& entry) {
    if (entry.type != "iden") out = std::ranges::copy(entry.box, out).out;
  });
  put(out, static_cast<std::uint64_t>(end - out), 4);
  std::ranges::copy(std::string_view("free"), out + 4);
}

}  // namespace

ImageItems::ImageItems(ByteView file) : file_(file) {
  if (!ISOBaseMedia::hasFileType(file)) return;
  Cursor meta(findBox(file, "meta"));
  takeFullBoxHeader(meta);
  pitm_ = findBox(meta.rest(), "pitm");
  iinf_ = findBox(meta.rest(), "iinf");
  iref_ = findBox(meta.rest(), "iref");
  iprp_ = findBox(meta.rest(), "iprp");
  primary_ = shown_ = primaryIdentifier(pitm_);
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
  if (shown_ == 0 || type.empty()) return std::nullopt;
  if (type != "grid") return type;
  const std::string_view tileType = itemType(iinf_, firstSource(iref_, shown_));
  return tileType.empty() ? type : tileType;
}

void ImageItems::checkReferences() const { ItemReferences(iref_).check(primary_, areasOf(iprp_)); }

void ImageItems::addTransformations(TransformativeProperties& properties) const {
  // Not std::views::reverse, which clang 14 cannot compile with GCC 12's library.
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
  writeWithoutIdentities(iinf_, count, file.data() + (iinf_.data() - file_.data()));
  if (shown_ != primary_) {
    const std::size_t size = identifierSizeOfPrimary(pitm_);
    if (size == 2 && shown_ > 0xFFFF) throw UnreadableImage("an identifier that does not fit");
    put(file.data() + (pitm_.data() - file_.data()) + 4, shown_, size);
  }
  return file;
}

}  // namespace orvane
