#include "workers/ProcessorBudget.h"

#include <algorithm>

namespace orvane {
namespace {

/// The encoders gain little from more, and each takes memory.
constexpr std::int64_t mostThreads = 16;

}  // namespace

int ProcessorBudget::start() {
  const std::scoped_lock lock(mutex_);
  const auto threads = static_cast<int>(std::clamp<std::int64_t>(threadsForNext(), 1, mostThreads));
  lentOut_ += threads - 1;
  return threads;
}

void ProcessorBudget::finish(int threads) {
  const std::scoped_lock lock(mutex_);
  lentOut_ -= threads - 1;
  ++finished_;
}

std::int64_t ProcessorBudget::threadsForNext() const {
  const std::int64_t unfinished = run_.files - finished_;
  if (run_.jobs >= run_.processors) {
    // The system itself keeps all processors busy as long as there are threads for them. Files that
    // are still in work when none waits were started while fewer than twice the jobs were
    // unfinished.
    return unfinished / 2 < run_.jobs ? run_.processors : 1;
  }
  return 1 + run_.jobs - unfinished - lentOut_;
}

}  // namespace orvane
