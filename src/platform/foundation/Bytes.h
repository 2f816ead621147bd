#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace orvane {

/// A file, or a part of one, in memory.
using Bytes = std::vector<std::uint8_t>;

/// Bytes that belong to somebody else, read only.
using ByteView = std::span<const std::uint8_t>;

}  // namespace orvane
