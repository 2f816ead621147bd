#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <ctime>

namespace orvane {

/// Watches the processor time of a worker from outside, for a picture may have taken over the
/// worker or let it sleep for ever. One thread.
class Supervision {
 public:
  using Clock = std::chrono::steady_clock;

  /// Begins now. `worker` may not be reaped meanwhile. It may do nothing for `patience`.
  Supervision(pid_t worker, Clock::duration patience);

  /// Lets the worker use `seconds` of processor time from the beginning on, and takes it for awake.
  void allow(std::uint64_t seconds);

  /// Whether the worker has used more than it may, or next to nothing for too long. To be asked
  /// about once a second.
  bool isExceeded();

 private:
  /// Of the worker's process since it was started.
  std::chrono::nanoseconds processorTime() const;

  clockid_t clock_ = CLOCK_REALTIME;
  Clock::duration patience_;
  std::chrono::nanoseconds before_{};   ///< used when this object began
  std::chrono::nanoseconds allowed_{};  ///< from then on
  std::chrono::nanoseconds lastUsed_{};
  Clock::time_point lastAwake_;
};

}  // namespace orvane
