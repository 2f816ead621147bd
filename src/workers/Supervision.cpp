#include "workers/Supervision.h"

namespace orvane {
namespace {

/// Processor time by which a worker that is awake differs from one that looks at a clock at times.
constexpr std::chrono::milliseconds leastProgress(10);

}  // namespace

Supervision::Supervision(pid_t worker, Clock::duration patience) : patience_(patience) {
  clock_getcpuclockid(worker, &clock_);
  before_ = processorTime();
  allow(0);
}

void Supervision::allow(std::uint64_t seconds) {
  allowed_ = std::chrono::seconds(seconds);
  lastUsed_ = processorTime();
  lastAwake_ = Clock::now();
}

bool Supervision::isExceeded() {
  const auto used = processorTime();
  const auto now = Clock::now();
  if (used >= lastUsed_ + leastProgress) {
    lastUsed_ = used;
    lastAwake_ = now;
  }
  return used - before_ > allowed_ || now - lastAwake_ > patience_;
}

std::chrono::nanoseconds Supervision::processorTime() const {
  timespec time{};
  clock_gettime(clock_, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

}  // namespace orvane
