#pragma once

#include <cstdint>
#include <vector>

#include "platform/foundation/Bytes.h"

/// The data of items (ISO/IEC 14496-12, 8.11.3). Safe on any bytes.
namespace orvane::ItemData {

struct Beginning {
  std::uint32_t item;
  Bytes bytes;
};

/// The first bytes of every item, at most `count` of each, in the order of the item location box.
/// Fewer where the data end before, and for data that are neither in the file nor in `idat`. The
/// three are the file and the contents of its boxes.
std::vector<Beginning> beginnings(ByteView file, ByteView iloc, ByteView idat, std::size_t count);

}  // namespace orvane::ItemData
