#include "codecs/ISOBaseMedia.h"

#include <algorithm>

namespace orvane::ISOBaseMedia {

ByteView Cursor::take(std::uint64_t count) {
  const auto taken = rest_.first(std::min<std::uint64_t>(count, rest_.size()));
  rest_ = rest_.subspan(taken.size());
  return taken;
}

std::uint64_t Cursor::number(std::size_t byteCount) {
  const ByteView bytes = take(byteCount);
  if (bytes.size() < byteCount) return 0;
  std::uint64_t value = 0;
  for (const std::uint8_t byte : bytes) value = value << 8 | byte;
  return value;
}

std::string_view Cursor::code() {
  const ByteView bytes = take(4);
  if (bytes.size() < 4) return {};
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// ISO/IEC 14496-12, 4.2: a size of 1 has its 64-bit value after the type, 0 means up to the end.
Box takeBox(Cursor& cursor) {
  const std::uint64_t shortSize = cursor.number(4);
  const std::string_view type = cursor.code();
  if (shortSize == 0) return {type, cursor.take(UINT64_MAX)};
  const std::uint64_t headerSize = shortSize == 1 ? 16 : 8;
  const std::uint64_t size = shortSize == 1 ? cursor.number(8) : shortSize;
  return {type, cursor.take(size < headerSize ? 0 : size - headerSize)};
}

ByteView findBox(ByteView boxes, std::string_view type) {
  for (Cursor cursor(boxes); !cursor.atEnd();) {
    const Box box = takeBox(cursor);
    if (box.type == type) return box.content;
  }
  return {};
}

FullBoxHeader takeFullBoxHeader(Cursor& cursor) {
  const auto value = static_cast<std::uint32_t>(cursor.number(4));
  return {static_cast<int>(value >> 24), value & 0xFFFFFF};
}

bool hasFileType(ByteView file) {
  Cursor start(file);
  return takeBox(start).type == "ftyp";
}

bool hasBrand(ByteView file, std::string_view brand) {
  if (!hasFileType(file)) return false;
  Cursor cursor(findBox(file, "ftyp"));
  if (cursor.code() == brand) return true;
  cursor.take(4);  // minor_version
  while (!cursor.atEnd()) {
    if (cursor.code() == brand) return true;
  }
  return false;
}

}  // namespace orvane::ISOBaseMedia
