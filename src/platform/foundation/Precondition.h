#pragma once

#include <concepts>
#include <cstdlib>
#include <utility>

namespace orvane {

/// Ends the process when a caller has broken the contract: a programming error, which no file and
/// no user can cause.
inline void precondition(bool holds) {
  if (!holds) std::abort();
}

/// Converts `value` to a type that must be able to hold it.
template <std::integral Target>
Target exactly(std::integral auto value) {
  precondition(std::in_range<Target>(value));
  return static_cast<Target>(value);
}

}  // namespace orvane
