#pragma once

#include <cstdint>

namespace orvane::OpenFiles {

/// The number of files that this process may have open.
std::int64_t limit();

/// Raises it as far as the system lets it.
void raiseLimit();

}  // namespace orvane::OpenFiles
