#pragma once

#include "platform/foundation/Descriptor.h"

namespace orvane {

/// Discards the process's standard error while it lives. Some codec libraries print remarks on
/// damaged pictures there, and nothing may be printed while files are in work. When the system
/// refuses the descriptors, the remarks show.
class QuietStandardError {
 public:
  QuietStandardError();
  ~QuietStandardError();
  QuietStandardError(const QuietStandardError&) = delete;
  QuietStandardError& operator=(const QuietStandardError&) = delete;

 private:
  Descriptor original_;  ///< duplicate of the real stream's
};

}  // namespace orvane
