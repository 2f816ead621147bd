#pragma once

#include <cstdint>
#include <mutex>

namespace orvane {

/// Shares the processors that a run keeps busy among its files, so that none stands idle while the
/// last files are in work. Any number of threads.
class ProcessorBudget {
 public:
  /// The size of a run.
  struct Run {
    std::int64_t jobs = 1;        ///< processors that it keeps busy, and files in work at once
    std::int64_t files = 0;       ///< each of which will have one share
    std::int64_t processors = 1;  ///< of the system
  };
  explicit ProcessorBudget(const Run& run) : run_(run) {}

  /// One file's, from its start to its end.
  class Share {
   public:
    explicit Share(ProcessorBudget& budget) : budget_(budget), threads_(budget.start()) {}
    ~Share() { budget_.finish(threads_); }
    Share(const Share&) = delete;
    Share& operator=(const Share&) = delete;

    /// Threads that may work on the file, at least 1.
    int threads() const { return threads_; }

   private:
    ProcessorBudget& budget_;
    const int threads_;
  };

 private:
  int start();
  void finish(int threads);
  std::int64_t threadsForNext() const;  ///< with the mutex held

  const Run run_;
  std::mutex mutex_;           ///< guards what follows
  std::int64_t finished_ = 0;  ///< files
  std::int64_t lentOut_ = 0;   ///< threads of files in work, beyond one for each
};

}  // namespace orvane
