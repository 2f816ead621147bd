#include "platform/foundation/TaskGroup.h"

#include <system_error>
#include <utility>

namespace orvane {

ThreadPool::~ThreadPool() {
  {
    const std::lock_guard lock(mutex_);
    closed_ = true;
  }
  changed_.notify_all();
  for (std::thread& worker : workers_) worker.join();
}

void ThreadPool::run(std::function<void()> work, std::size_t wantedWorkers) {
  if (workers_.size() < wantedWorkers) startWorker();
  if (workers_.empty()) {
    work();
    return;
  }
  {
    const std::lock_guard lock(mutex_);
    waiting_.push_back(std::move(work));
  }
  changed_.notify_one();
}

void ThreadPool::startWorker() {
  try {
    workers_.emplace_back([this] { workUntilClosed(); });
  } catch (const std::system_error&) {
    // The system has no more threads: the existing ones do the work.
  }
}

void ThreadPool::workUntilClosed() {
  for (;;) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return closed_ || !waiting_.empty(); });
    if (waiting_.empty()) return;
    const std::function<void()> work = std::move(waiting_.front());
    waiting_.pop_front();
    lock.unlock();
    work();
  }
}

}  // namespace orvane
