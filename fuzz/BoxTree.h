#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/foundation/Bytes.h"

namespace orvane::fuzz {

/// A box of an ISO base media file (ISO/IEC 14496-12) that can be changed. Sizes, and the number of
/// entries of an item information box, are found when it is written.
struct BoxTree {
  std::string type;
  Bytes content;                  ///< of a container: the fields before its boxes
  std::vector<BoxTree> children;  ///< none where the type is no container

  /// Containers more than `levels` deep are read as if they were none.
  static std::vector<BoxTree> read(ByteView boxes, int levels = 8);

  /// Appends the box with its header.
  void write(Bytes& out) const;

  /// The first child of this type, appended empty when there is none.
  BoxTree& child(const std::string& childType);
};

/// A big-endian number of `byteCount` bytes.
void appendNumber(Bytes& out, std::uint64_t value, int byteCount);

}  // namespace orvane::fuzz
