#include "platform/foundation/Parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <latch>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "platform/foundation/TaskGroup.h"

namespace orvane {
namespace {

/// Calls with the indices that several threads share.
class SharedCalls {
 public:
  using Work = std::function<void(std::size_t index, std::size_t thread)>;

  SharedCalls(std::size_t count, const Work& work) : count_(count), work_(work) {}

  /// Calls until there are no more indices.
  void run(std::size_t thread) noexcept try {
    for (std::size_t index = next_++; index < count_; index = next_++) work_(index, thread);
  } catch (...) {
    next_ = count_;
    const std::scoped_lock lock(mutex_);
    error_ = std::current_exception();
  }

  /// Once no thread runs any more.
  void rethrow() const {
    if (error_) std::rethrow_exception(error_);
  }

 private:
  const std::size_t count_;
  const Work& work_;
  std::atomic<std::size_t> next_ = 0;
  std::mutex mutex_;  ///< guards the error
  std::exception_ptr error_;
};

/// Lets up to `count` other threads join in.
void addThreads(ThreadPool& pool, std::size_t count, SharedCalls& calls) try {
  for (std::size_t thread = 1; thread <= count; ++thread) {
    pool.run([&calls, thread] { calls.run(thread); }, thread);
  }
} catch (const std::bad_alloc&) {
  // The threads that there are do the work.
}

}  // namespace

void inParallel(std::size_t count, int threads, const SharedCalls::Work& work) {
  SharedCalls calls(count, work);
  {
    ThreadPool pool;  // waits for its threads at the end
    const std::size_t useful = std::min(count, static_cast<std::size_t>(std::max(threads, 1)));
    if (useful > 1) addThreads(pool, useful - 1, calls);
    calls.run(0);
  }
  calls.rethrow();
}

int startableThreads(int wanted) {
  std::latch counted(1);  // keeps all of them alive until the last is started
  std::vector<std::thread> threads;
  threads.reserve(static_cast<std::size_t>(std::max(wanted, 0)));
  try {
    while (std::cmp_less(threads.size(), wanted)) threads.emplace_back([&] { counted.wait(); });
  } catch (const std::system_error&) {
    // The system has no more.
  }
  counted.count_down();
  for (std::thread& thread : threads) thread.join();
  return static_cast<int>(threads.size());
}

}  // namespace orvane
