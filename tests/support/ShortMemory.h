#pragma once

#include <cstddef>

namespace orvane::test {

/// Allocates all memory that this process has at hand and lets it have at most `bytes` more. Only
/// the child process of a death test may call it, since nothing gives the memory back. Blocks of
/// less than 16 KiB may still be had when `bytes` is 0. Throws std::system_error.
void leaveMemory(std::size_t bytes);

/// Whether this is a build with a sanitizer, which ends the process when an allocation fails.
constexpr bool endsWithoutMemory() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  return true;
#else
  return false;
#endif
}

}  // namespace orvane::test
