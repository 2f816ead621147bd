#include "workers/MemoryBudget.h"

namespace orvane {

std::uint64_t MemoryBudget::waiting() {
  const std::scoped_lock lock(mutex_);
  return nextTicket_ - served_;
}

MemoryBudget::Share::Share(MemoryBudget& budget, std::uint64_t bytes) : budget_(budget) {
  {
    const std::scoped_lock lock(budget.mutex_);
    ++budget.atWork_;
  }
  exchange(0, bytes);
}

MemoryBudget::Share::~Share() {
  const std::scoped_lock lock(budget_.mutex_);
  budget_.taken_ -= bytes_;
  --budget_.atWork_;
  budget_.changed_.notify_all();
}

void MemoryBudget::Share::exchange(std::uint64_t kept, std::uint64_t bytes) {
  std::unique_lock lock(budget_.mutex_);
  budget_.taken_ -= bytes_ - kept;
  bytes_ = kept;
  const std::uint64_t ticket = budget_.nextTicket_++;
  --budget_.atWork_;
  budget_.changed_.notify_all();
  budget_.changed_.wait(lock, [&] {
    const bool fits = budget_.taken_ - bytes_ + bytes <= budget_.total_;
    return ticket == budget_.served_ && (fits || budget_.atWork_ == 0);
  });
  ++budget_.served_;
  ++budget_.atWork_;
  budget_.taken_ += bytes - bytes_;
  bytes_ = bytes;
  budget_.changed_.notify_all();
}

}  // namespace orvane
