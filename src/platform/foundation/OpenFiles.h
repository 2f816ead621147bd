#pragma once

#include <cstdint>

namespace orvane::OpenFiles {

/// Raises the number of files that this process may have open as far as the system lets it, and
/// gives it.
std::int64_t raiseLimit();

}  // namespace orvane::OpenFiles
