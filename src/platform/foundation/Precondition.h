#pragma once

#include <concepts>
#include <cstdlib>
#include <utility>

namespace orvane {

/// Ends the process where a caller has broken its side of the contract: a programming error, never
/// something that a file or a person can bring about.
inline void precondition(bool holds) {
  if (!holds) std::abort();
}

/// `value` as a type that must be able to hold it.
template <std::integral Target>
Target exactly(std::integral auto value) {
  precondition(std::in_range<Target>(value));
  return static_cast<Target>(value);
}

}  // namespace orvane
