#pragma once

#include <stdexcept>

namespace orvane {

/// The bytes are no readable picture, or an incomplete one. `what()` says why, for
/// developers.
class UnreadableImage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace orvane
