#include "support/BoxBuilder.h"

#include <algorithm>
#include <stdexcept>

#include "codecs/ISOBaseMedia.h"

namespace orvane::test {
namespace {

using ISOBaseMedia::Cursor;
using ISOBaseMedia::findBox;

std::string text(ByteView bytes) { return {bytes.begin(), bytes.end()}; }

void require(bool holds) {
  if (!holds) throw std::runtime_error("a box of another version");
}

/// A full box with a counter of that many bytes at its front, `entries` added at its end.
std::string extended(const std::string& type, ByteView content, int countSize, std::size_t added,
                     const std::string& entries) {
  Cursor cursor(content);
  require(takeFullBoxHeader(cursor).version == 0);
  const std::uint64_t count = cursor.number(static_cast<std::size_t>(countSize)) + added;
  return fullBox(type, 0, bigEndian(count, countSize) + text(cursor.rest()) + entries);
}

std::string changedItems(ByteView iinf, const ItemChanges& changes) {
  std::string entries;
  for (const auto& item : changes.added) entries += infe(2, item.identifier, item.type);
  return extended("iinf", iinf, 2, changes.added.size(), entries);
}

std::string changedReferences(ByteView iref, const ItemChanges& changes) {
  std::string content = iref.empty() ? bigEndian(0, 4) : text(iref);
  for (const std::string& added : changes.references) content += added;
  return box("iref", content);
}

std::string changedProperties(ByteView iprp, const ItemChanges& changes) {
  std::string properties = text(findBox(iprp, "ipco"));
  std::uint8_t count = 0;
  for (Cursor cursor(findBox(iprp, "ipco")); !cursor.atEnd(); ++count) takeBox(cursor);
  std::string associations;
  for (const auto& item : changes.added) {
    associations += bigEndian(item.identifier, 2) + bigEndian(item.properties.size(), 1);
    for (const std::string& property : item.properties) {
      properties += property;
      associations += bigEndian(++count | 0x80U, 1);
    }
  }
  return box("iprp", box("ipco", properties) + extended("ipma", findBox(iprp, "ipma"), 4,
                                                        changes.added.size(), associations));
}

/// Data of added items stand one after the other in the file, from `offset` on.
std::string changedLocations(ByteView iloc, const ItemChanges& changes, std::size_t offset) {
  Cursor cursor(iloc);
  const int version = takeFullBoxHeader(cursor).version;
  require(version < 2);
  const std::uint64_t sizes = cursor.number(2);
  const auto sizeAt = [&](int shift) { return static_cast<int>(sizes >> shift & 15); };
  std::uint64_t count = cursor.number(2);
  std::string entries = text(cursor.rest());
  for (const auto& item : changes.added) {
    if (item.data.empty()) continue;
    ++count;
    entries += bigEndian(item.identifier, 2) + (version == 1 ? bigEndian(0, 2) : "") +
               bigEndian(0, 2) + bigEndian(0, sizeAt(4)) + bigEndian(1, 2) +
               (version == 1 ? bigEndian(0, sizeAt(0)) : "") + bigEndian(offset, sizeAt(12)) +
               bigEndian(item.data.size(), sizeAt(8));
    offset += item.data.size();
  }
  return fullBox("iloc", version, bigEndian(sizes, 2) + bigEndian(count, 2) + entries);
}

/// The boxes of the changed meta box.
std::string changedMeta(ByteView boxes, const ItemChanges& changes, std::size_t dataOffset) {
  std::string result;
  for (Cursor cursor(boxes); !cursor.atEnd();) {
    const auto [type, content] = takeBox(cursor);
    if (type == "iinf") {
      result += changedItems(content, changes);
    } else if (type == "iloc") {
      result += changedLocations(content, changes, dataOffset);
    } else if (type == "iprp") {
      result += changedProperties(content, changes);
    } else if (type == "pitm" && changes.primary) {
      result += pitm(*changes.primary);
    } else if (type != "iref") {
      result += box(std::string(type), text(content));
    }
  }
  return result + changedReferences(findBox(boxes, "iref"), changes);
}

}  // namespace

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

std::string iinf(const std::vector<std::string>& entries) {
  std::string content = bigEndian(entries.size(), 2);
  for (const std::string& entry : entries) content += entry;
  return fullBox("iinf", 0, content);
}

std::string pitm(std::uint32_t item) { return fullBox("pitm", 0, bigEndian(item, 2)); }

std::string meta(const std::string& boxes) { return fullBox("meta", 0, boxes); }

std::string reference(const std::string& type, std::uint32_t from,
                      const std::vector<std::uint32_t>& to) {
  std::string content = bigEndian(from, 2) + bigEndian(to.size(), 2);
  for (const std::uint32_t item : to) content += bigEndian(item, 2);
  return box(type, content);
}

std::string iref(const std::vector<std::string>& references) {
  std::string content;
  for (const std::string& each : references) content += each;
  return fullBox("iref", 0, content);
}

std::string ispe(std::uint32_t width, std::uint32_t height) {
  return fullBox("ispe", 0, bigEndian(width, 4) + bigEndian(height, 4));
}

std::string irot(int quarters) { return box("irot", std::string(1, static_cast<char>(quarters))); }

std::string imir(int axis) { return box("imir", std::string(1, static_cast<char>(axis))); }

std::string clap(std::uint32_t width, std::uint32_t height, int halvesRight, int halvesDown) {
  const auto fraction = [](int numerator, int denominator) {
    return bigEndian(static_cast<std::uint32_t>(numerator), 4) +
           bigEndian(static_cast<std::uint32_t>(denominator), 4);
  };
  return box("clap", fraction(static_cast<int>(width), 1) + fraction(static_cast<int>(height), 1) +
                         fraction(halvesRight, 2) + fraction(halvesDown, 2));
}

std::string iprp(const std::vector<std::string>& properties,
                 const std::vector<Association>& associations) {
  std::string container;
  for (const std::string& property : properties) container += property;
  std::string entries = bigEndian(associations.size(), 4);
  for (const auto& [item, places] : associations) {
    entries += bigEndian(item, 2) + bigEndian(places.size(), 1);
    for (const std::uint8_t place : places) entries += static_cast<char>(place);
  }
  return box("iprp", box("ipco", container) + fullBox("ipma", 0, entries));
}

std::string gridData(int columns, int rows, std::uint16_t width, std::uint16_t height) {
  return bigEndian(0, 2) + bigEndian(static_cast<unsigned>(rows - 1), 1) +
         bigEndian(static_cast<unsigned>(columns - 1), 1) + bigEndian(width, 2) +
         bigEndian(height, 2);
}

Bytes withItems(const Bytes& file, const ItemChanges& changes) {
  const ByteView old = findBox(file, "meta");
  Cursor cursor(old);
  takeFullBoxHeader(cursor);
  std::string data;
  for (const auto& item : changes.added) data += item.data;
  const std::string added =
      box("mdat", data) + meta(changedMeta(cursor.rest(), changes, file.size() + 8));
  Bytes result = file;
  const auto type = result.begin() + (old.data() - file.data()) - 4;
  std::ranges::copy(std::string("free"), type);
  result.insert(result.end(), added.begin(), added.end());
  return result;
}

std::uint32_t primaryItem(const Bytes& file) {
  Cursor boxes(findBox(file, "meta"));
  takeFullBoxHeader(boxes);
  Cursor cursor(findBox(boxes.rest(), "pitm"));
  require(takeFullBoxHeader(cursor).version == 0);
  return static_cast<std::uint32_t>(cursor.number(2));
}

Bytes withIdentity(const Bytes& file, std::uint32_t identifier,
                   const std::vector<std::string>& properties) {
  return withItems(file, {.added = {{identifier, "iden", properties}},
                          .references = {reference("dimg", identifier, {primaryItem(file)})},
                          .primary = identifier});
}

}  // namespace orvane::test
