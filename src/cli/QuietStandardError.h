#pragma once

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
  int original_;  ///< duplicate of the real stream's descriptor; −1 when there is none
};

}  // namespace orvane
