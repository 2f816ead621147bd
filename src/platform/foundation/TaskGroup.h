#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace orvane {

/// Worker threads that take tasks from one queue. Owned and used by one thread. When the system
/// refuses another thread, tasks wait for the existing ones; without any, the owner runs the tasks
/// itself.
class ThreadPool {
 public:
  ThreadPool() = default;
  ThreadPool(const ThreadPool&) = delete;
  ThreadPool& operator=(const ThreadPool&) = delete;

  /// Waits for every task.
  ~ThreadPool();

  /// Queues `work`, which does not throw, and starts a worker when there are fewer than
  /// `wantedWorkers`.
  void run(std::function<void()> work, std::size_t wantedWorkers);

 private:
  void startWorker();
  void workUntilClosed();

  std::vector<std::thread> workers_;  ///< the owner's thread only
  std::mutex mutex_;                  ///< guards the members below
  std::condition_variable changed_;
  std::deque<std::function<void()>> waiting_;
  bool closed_ = false;
};

/// Child tasks that each give one `Result`, taken in the order in which they finish, on as many
/// threads as there are children. Owned and used by one thread; destruction waits for all children.
template <typename Result>
class TaskGroup {
 public:
  /// Starts a child; `work` does not throw.
  void add(std::function<Result()> work) {
    pool_.run(
        [this, work = std::move(work)] {
          Result result = work();
          const std::lock_guard lock(mutex_);
          finished_.push_back(std::move(result));
          arrived_.notify_one();
        },
        pending_ + 1);
    ++pending_;
  }

  /// The next child to finish, or nothing when none is left.
  std::optional<Result> next() {
    if (pending_ == 0) return std::nullopt;
    std::unique_lock lock(mutex_);
    arrived_.wait(lock, [this] { return !finished_.empty(); });
    std::optional<Result> result(std::move(finished_.front()));
    finished_.pop_front();
    --pending_;
    return result;
  }

 private:
  std::size_t pending_ = 0;  ///< added and not yet taken; the owner's thread only
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<Result> finished_;
  ThreadPool pool_;  ///< last, so that its threads end before the members that they use
};

}  // namespace orvane
