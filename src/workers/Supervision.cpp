#include "workers/Supervision.h"

#include <ctime>

namespace orvane {
namespace {

/// Processor time by which a worker that is awake differs from one that looks at a clock at times.
constexpr std::chrono::milliseconds leastProgress(10);

/// Of a process since it was started.
std::chrono::nanoseconds processorTime(pid_t process) {
  clockid_t clock{};
  timespec time{};
  if (clock_getcpuclockid(process, &clock) == 0) clock_gettime(clock, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

}  // namespace

bool Supervision::isExceeded() {
  const auto used = processorTime(worker_);
  const auto now = Clock::now();
  if (!before_) before_ = used;
  if (!lastAwake_ || used >= lastUsed_ + leastProgress) {
    lastUsed_ = used;
    lastAwake_ = now;
  }
  return used - *before_ > allowed_ || now - *lastAwake_ > patience_;
}

}  // namespace orvane
