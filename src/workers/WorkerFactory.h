#pragma once

#include <sys/types.h>

#include <mutex>
#include <optional>

#include "platform/foundation/ProcessTitle.h"
#include "workers/Channel.h"

namespace orvane {

/// A process that was forked while this one had a single thread, and forks workers when it is asked
/// to. Forking from a process with threads would copy locks that nobody ever opens.
class WorkerFactory {
 public:
  /// Throws std::system_error where there is no other process to be had. To be called while the
  /// process has one thread. `title` is what the new processes show of themselves.
  explicit WorkerFactory(const ProcessTitle& title);

  /// The factory and its workers end with their channels.
  ~WorkerFactory();
  WorkerFactory(const WorkerFactory&) = delete;
  WorkerFactory& operator=(const WorkerFactory&) = delete;

  struct Worker {
    pid_t process;
    Channel channel;
  };

  /// Forks a worker. Gives std::nullopt when the system has no more processes. Any thread.
  std::optional<Worker> start();

  /// Ends a worker, be it dead already, and gives its wait status (wait(2)), or nothing when that
  /// is not known. Any thread.
  std::optional<int> reap(pid_t process);

 private:
  std::optional<Channel::Received> ask(const Message& question);

  std::mutex mutex_;  ///< guards the channel: one question and its answer at a time
  Channel channel_;
  pid_t process_ = -1;
};

}  // namespace orvane
