#include "codecs/ISOBaseMedia.h"

#include <algorithm>
#include <cstdint>

namespace orvane::ISOBaseMedia {
namespace {

/// Derivations that are followed from one item to the next: a grid of identities is two. Loops end
/// here too.
constexpr int maximumDerivations = 4;

/// Takes values off the front of some bytes. Past the end numbers are 0 and codes are empty: item 0
/// and the empty code stand for nothing (ISO/IEC 14496-12, 8.11).
class Cursor {
 public:
  explicit Cursor(ByteView bytes) : rest_(bytes) {}

  bool atEnd() const { return rest_.empty(); }

  ByteView take(std::uint64_t count) {
    const auto taken = rest_.first(std::min<std::uint64_t>(count, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return taken;
  }

  /// A big-endian number of that many bytes.
  std::uint64_t number(std::size_t byteCount) {
    const ByteView bytes = take(byteCount);
    if (bytes.size() < byteCount) return 0;
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes) value = value << 8 | byte;
    return value;
  }

  std::string_view code() {
    const ByteView bytes = take(4);
    if (bytes.size() < 4) return {};
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
  }

 private:
  ByteView rest_;
};

struct Box {
  std::string_view type;
  ByteView content;
};

/// ISO/IEC 14496-12, 4.2: a size of 1 has its 64-bit value after the type, 0 means up to the end.
Box takeBox(Cursor& cursor) {
  const std::uint64_t shortSize = cursor.number(4);
  const std::string_view type = cursor.code();
  if (shortSize == 0) return {type, cursor.take(UINT64_MAX)};
  const std::uint64_t headerSize = shortSize == 1 ? 16 : 8;
  const std::uint64_t size = shortSize == 1 ? cursor.number(8) : shortSize;
  return {type, cursor.take(size < headerSize ? 0 : size - headerSize)};
}

/// The content of the first box of that type in a row of boxes; empty when there is none.
ByteView findBox(ByteView boxes, std::string_view type) {
  for (Cursor cursor(boxes); !cursor.atEnd();) {
    const Box box = takeBox(cursor);
    if (box.type == type) return box.content;
  }
  return {};
}

/// The version of a full box, whose flags are passed over.
int takeVersion(Cursor& cursor) { return static_cast<int>(cursor.number(4) >> 24); }

/// Item identifiers have 16 bits in the first version of each box that holds them, 32 in later
/// ones.
std::size_t identifierSize(int version, int firstWideVersion) {
  return version < firstWideVersion ? 2 : 4;
}

std::uint64_t primaryIdentifier(ByteView pitm) {
  Cursor cursor(pitm);
  const int version = takeVersion(cursor);
  return cursor.number(identifierSize(version, 1));
}

/// Empty when the item has no entry, or one of the versions that have no type.
std::string_view itemType(ByteView iinf, std::uint64_t item) {
  Cursor entries(iinf);
  const int version = takeVersion(entries);
  entries.take(identifierSize(version, 1));  // the count; the boxes themselves tell
  while (!entries.atEnd()) {
    const Box entry = takeBox(entries);
    if (entry.type != "infe") continue;
    Cursor cursor(entry.content);
    const int entryVersion = takeVersion(cursor);
    if (entryVersion < 2) continue;
    if (cursor.number(identifierSize(entryVersion, 3)) != item) continue;
    cursor.take(2);  // item_protection_index
    return cursor.code();
  }
  return {};
}

/// The first item that `item` is derived from; 0 when there is none.
std::uint64_t firstSource(ByteView iref, std::uint64_t item) {
  Cursor references(iref);
  const std::size_t idSize = identifierSize(takeVersion(references), 1);
  while (!references.atEnd()) {
    const Box reference = takeBox(references);
    Cursor cursor(reference.content);
    if (reference.type != "dimg" || cursor.number(idSize) != item) continue;
    return cursor.number(2) == 0 ? 0 : cursor.number(idSize);
  }
  return 0;
}

bool passesOn(std::string_view derivation) { return derivation == "grid" || derivation == "iden"; }

}  // namespace

bool hasBrand(ByteView file, std::string_view brand) {
  Cursor start(file);
  const Box box = takeBox(start);
  if (box.type != "ftyp") return false;
  Cursor cursor(box.content);
  if (cursor.code() == brand) return true;
  cursor.take(4);  // minor_version
  while (!cursor.atEnd()) {
    if (cursor.code() == brand) return true;
  }
  return false;
}

std::optional<std::string_view> primaryItemCoding(ByteView file) {
  Cursor start(file);
  if (takeBox(start).type != "ftyp") return std::nullopt;
  Cursor meta(findBox(file, "meta"));
  takeVersion(meta);
  const ByteView boxes = meta.take(UINT64_MAX);
  const ByteView iinf = findBox(boxes, "iinf");
  const ByteView iref = findBox(boxes, "iref");

  std::uint64_t item = primaryIdentifier(findBox(boxes, "pitm"));
  std::string_view codedAs = itemType(iinf, item);
  if (item == 0 || codedAs.empty()) return std::nullopt;
  for (int hop = 0; hop < maximumDerivations && passesOn(codedAs); ++hop) {
    item = firstSource(iref, item);
    const std::string_view sourceType = itemType(iinf, item);
    if (item == 0 || sourceType.empty()) break;
    codedAs = sourceType;
  }
  return codedAs;
}

}  // namespace orvane::ISOBaseMedia
