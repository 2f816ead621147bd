#pragma once

#include <cstddef>
#include <cstdint>

/// The memory of this process.
namespace orvane::Memory {

/// Physical memory, or the limit of the process's control group or of one above it when that is
/// less. Bytes.
std::uint64_t usable();

/// Throws std::bad_alloc where so many bytes cannot be had from the system now. For calls into
/// libraries that end the process when an allocation fails.
void require(std::size_t bytes);

}  // namespace orvane::Memory
