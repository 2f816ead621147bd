#pragma once

#include <cstddef>

namespace orvane::test {

/// Takes all memory that this process has at hand and lets it have at most `bytes` more. For the
/// child process of a death test: nothing gives the memory back. Blocks of less than 16 KiB may
/// still be had where `bytes` is 0. Throws std::system_error.
void leaveMemory(std::size_t bytes);

/// Whether this is a sanitizer's build, which ends the process where there is no memory.
constexpr bool endsWithoutMemory() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  return true;
#else
  return false;
#endif
}

}  // namespace orvane::test
