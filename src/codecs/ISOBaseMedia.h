#pragma once

#include <cstdint>
#include <string_view>

#include "platform/foundation/Bytes.h"

/// The boxes that ISO base media files (ISO/IEC 14496-12) are made of. Safe on any bytes: a box
/// that reaches past the end of what holds it is read as far as it goes. Codes are the four
/// characters that stand in the file ("meta"); they refer to the file's bytes, which must outlive
/// them.
namespace orvane::ISOBaseMedia {

/// Takes values off the front of some bytes. Past the end numbers are 0 and codes are empty: item 0
/// and the empty code stand for nothing (ISO/IEC 14496-12, 8.11).
class Cursor {
 public:
  explicit Cursor(ByteView bytes) : rest_(bytes) {}

  bool atEnd() const { return rest_.empty(); }
  ByteView rest() const { return rest_; }

  /// At most that many bytes.
  ByteView take(std::uint64_t count);

  /// A big-endian number of that many bytes.
  std::uint64_t number(std::size_t byteCount);

  std::string_view code();

 private:
  ByteView rest_;
};

struct Box {
  std::string_view type;
  ByteView content;
};

Box takeBox(Cursor& cursor);

/// The content of the first box of that type in a row of boxes; empty when there is none.
ByteView findBox(ByteView boxes, std::string_view type);

/// The first field of a full box.
struct FullBoxHeader {
  int version;
  std::uint32_t flags;
};
FullBoxHeader takeFullBoxHeader(Cursor& cursor);

/// Bytes of an item's identifier: 2 in the first versions of each box that holds them, 4 in later
/// ones.
constexpr std::size_t identifierSize(int version, int firstWideVersion) {
  return version < firstWideVersion ? 2 : 4;
}

/// Whether the file begins with a file type box.
bool hasFileType(ByteView file);

/// Whether that box names `brand` as its major brand or as a compatible one.
bool hasBrand(ByteView file, std::string_view brand);

}  // namespace orvane::ISOBaseMedia
