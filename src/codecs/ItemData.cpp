#include "codecs/ItemData.h"

#include <algorithm>

#include "codecs/ISOBaseMedia.h"

namespace orvane::ItemData {
namespace {

using ISOBaseMedia::Cursor;

/// Takes the entries off the front of an item location box.
class Entries {
 public:
  explicit Entries(ByteView iloc) : cursor_(iloc) {
    version_ = takeFullBoxHeader(cursor_).version;
    const std::uint64_t sizes = cursor_.number(2);
    offsetSize_ = sizes >> 12;
    lengthSize_ = sizes >> 8 & 15;
    baseSize_ = sizes >> 4 & 15;
    indexSize_ = version_ == 0 ? 0 : sizes & 15;
    cursor_.take(identifierSize());  // the count of items
  }

  bool atEnd() const { return cursor_.atEnd(); }

  Beginning take(ByteView file, ByteView idat, std::size_t count) {
    Beginning entry{.item = static_cast<std::uint32_t>(cursor_.number(identifierSize()))};
    const std::uint64_t method = version_ == 0 ? 0 : cursor_.number(2) & 15;
    cursor_.take(2);  // data_reference_index
    const ByteView data = method == 0 ? file : method == 1 ? idat : ByteView();
    const std::uint64_t base = cursor_.number(baseSize_);
    std::uint64_t left = cursor_.number(2);
    // Without fields all extents are the same: one of them is enough, and many would take long.
    if (indexSize_ + offsetSize_ + lengthSize_ == 0) left = std::min<std::uint64_t>(left, 1);
    for (; left > 0; --left) {
      const ByteView extent = takeExtent(data, base);
      const std::size_t missing = count - entry.bytes.size();
      const ByteView used = extent.first(std::min(extent.size(), missing));
      entry.bytes.insert(entry.bytes.end(), used.begin(), used.end());
      if (cursor_.atEnd()) break;
    }
    return entry;
  }

 private:
  std::size_t identifierSize() const { return ISOBaseMedia::identifierSize(version_, 2); }

  /// A part of the data of an item; without a length it has all from its offset on.
  ByteView takeExtent(ByteView data, std::uint64_t base) {
    cursor_.take(indexSize_);
    const std::uint64_t offset = base + cursor_.number(offsetSize_);
    const std::uint64_t length = cursor_.number(lengthSize_);
    Cursor part(data);
    part.take(offset);
    return part.take(length == 0 ? UINT64_MAX : length);
  }

  Cursor cursor_;
  int version_ = 0;
  std::size_t offsetSize_ = 0, lengthSize_ = 0, baseSize_ = 0, indexSize_ = 0;  ///< bytes
};

}  // namespace

std::vector<Beginning> beginnings(ByteView file, ByteView iloc, ByteView idat, std::size_t count) {
  std::vector<Beginning> result;
  for (Entries entries(iloc); !entries.atEnd();) result.push_back(entries.take(file, idat, count));
  return result;
}

}  // namespace orvane::ItemData
