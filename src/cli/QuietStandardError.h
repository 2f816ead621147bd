#pragma once

namespace orvane {

/// While it lives, what the process writes to standard error goes nowhere: some codec libraries
/// write there what they think of damaged pictures, and nothing is to be printed while files are in
/// work. Where it cannot be arranged, the remarks show.
class QuietStandardError {
 public:
  QuietStandardError();
  ~QuietStandardError();
  QuietStandardError(const QuietStandardError&) = delete;
  QuietStandardError& operator=(const QuietStandardError&) = delete;

 private:
  int original_;  ///< a second descriptor of the real stream, or −1
};

}  // namespace orvane
