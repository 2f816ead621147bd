#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <optional>

namespace orvane {

/// Watches the processor time of a worker from outside, for a picture may have taken over the
/// worker or let it sleep for ever. One thread.
class Supervision {
 public:
  using Clock = std::chrono::steady_clock;

  /// `worker` may not be reaped meanwhile. It may do nothing for `patience`.
  Supervision(pid_t worker, Clock::duration patience) : worker_(worker), patience_(patience) {}

  /// Lets the worker use `seconds` of processor time, and takes it for awake.
  void allow(std::uint64_t seconds) {
    allowed_ = std::chrono::seconds(seconds);
    lastAwake_.reset();
  }

  /// Whether the worker has used more than it may since this was first asked, or next to nothing
  /// for too long. To be asked about once a second.
  bool isExceeded();

 private:
  pid_t worker_;
  Clock::duration patience_;
  std::chrono::nanoseconds allowed_{};
  std::optional<std::chrono::nanoseconds> before_;  ///< used when this was first asked
  std::optional<Clock::time_point> lastAwake_;      ///< seen
  std::chrono::nanoseconds lastUsed_{};             ///< then
};

}  // namespace orvane
