#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "pipeline/ImageCompressor.h"
#include "platform/foundation/ProcessTitle.h"
#include "platform/foundation/SourceFile.h"
#include "workers/MemoryBudget.h"
#include "workers/ProcessorBudget.h"
#include "workers/WorkerFactory.h"

namespace orvane {

/// Compresses files in worker processes, so that a crash, a hang or a lack of memory inside a codec
/// costs one file. Any number of threads; each of them keeps one worker busy.
class WorkerPool {
 public:
  /// Throws std::system_error where no processes can be had. To be called while the process has one
  /// thread. A worker that does nothing for longer than `patience` is given up with its file.
  /// Each worker shows the name of its file as its title.
  explicit WorkerPool(const ProcessTitle& title = {}, const ProcessorBudget::Run& run = {},
                      std::chrono::milliseconds patience = std::chrono::minutes(1));

  /// Compresses with a pool of its own, or in this process where no others can be had. To be called
  /// while the process has one thread.
  static ImageCompressor::CompressSource sourceCompressor(const ProcessTitle& title,
                                                          const ProcessorBudget::Run& run);

  /// As compressHere: the same bytes, the same errors. This process does not look into the file.
  CompressedFile compress(const std::string& path, ImageFormat format, double quality);

 private:
  using Worker = WorkerFactory::Worker;
  enum class Company { others, none };
  struct Outcome;
  class Conversation;

  /// The order for one file.
  struct Task {
    std::string name;  ///< the worker shows it
    ImageFormat format;
    double quality;
    int threads;  ///< that may work on it
  };

  /// One attempt; with `Company::none` it waits for all the memory there is.
  Outcome attempt(const SourceFile& source, const Task& task, Company company);

  /// Bytes past which allocations of a worker with this share fail: an estimate that is a little
  /// too low costs no file.
  std::uint64_t limit(const MemoryBudget::Share& share) const;

  /// An idle worker, or a new one. A file that is alone gets a new one while there are any to be
  /// had: its outcome may not depend on what a worker has done before. Waits for one that is at
  /// work where there are no more processes; nothing when none is left.
  std::optional<Worker> take(Company company);
  std::optional<Worker> takeIdle();  ///< with the mutex held
  void giveBack(Worker worker);

  /// Ends a worker. Gives its wait status where it is known.
  std::optional<int> bury(Worker worker);

  const std::chrono::milliseconds patience_;
  WorkerFactory factory_;
  MemoryBudget budget_;
  ProcessorBudget processors_;
  std::mutex mutex_;  ///< guards what follows
  std::condition_variable changed_;
  std::vector<Worker> idle_;
  std::size_t living_ = 0;  ///< workers, idle or not
};

}  // namespace orvane
