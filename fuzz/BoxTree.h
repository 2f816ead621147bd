#pragma once

#include <string>
#include <vector>

#include "platform/foundation/Bytes.h"

namespace orvane::fuzz {

/// A box of an ISO base media file (ISO/IEC 14496-12) that can be changed. Sizes, and the number of
/// entries of an item information box, are found when it is written.
struct BoxTree {
  std::string type;
  std::string content;            ///< of a container: the fields before its boxes
  std::vector<BoxTree> children;  ///< none where the type is no container

  /// Containers more than `levels` deep are read as if they were none.
  static std::vector<BoxTree> read(ByteView boxes, int levels = 8);

  /// The box with its header.
  std::string written() const;

  /// The first child of this type, appended empty when there is none.
  BoxTree& child(const std::string& childType);
};

}  // namespace orvane::fuzz
