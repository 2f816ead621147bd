#pragma once

#include <cstdint>

namespace orvane::ProcessInfo {

/// Processors that this process may run on, at least 1.
std::int64_t activeProcessorCount();

}  // namespace orvane::ProcessInfo
