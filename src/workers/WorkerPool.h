#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "pipeline/ImageCompressor.h"
#include "workers/MemoryBudget.h"
#include "workers/WorkerFactory.h"

namespace orvane {

/// Compresses files in worker processes, so that a crash, a hang or a lack of memory inside a codec
/// costs one file. Any number of threads; each of them keeps one worker busy.
class WorkerPool {
 public:
  /// Throws std::system_error where no processes can be had. To be called while the process has one
  /// thread.
  WorkerPool();

  /// Compresses with a pool of its own, or in this process where no others can be had. To be called
  /// while the process has one thread.
  static ImageCompressor::CompressSource sourceCompressor();

  /// As compressHere: the same bytes, the same errors. This process does not look
  /// into the file.
  CompressedFile compress(const std::string& path, ImageFormat format, double quality);

 private:
  using Worker = WorkerFactory::Worker;
  enum class Company { others, none };
  struct Outcome;
  class Conversation;

  /// One attempt; with `Company::none` it waits for all the memory there is.
  Outcome attempt(const std::string& path, ImageFormat format, double quality, Company company);

  /// An idle worker, or a new one; nothing where there is none to be had. Always a new one for a
  /// file that is alone: its outcome may not depend on what a worker has done before.
  std::optional<Worker> take(Company company);
  void giveBack(Worker worker);

  /// The wait status of a worker that is dead or about to end.
  std::optional<int> bury(Worker worker);

  WorkerFactory factory_;
  MemoryBudget budget_;
  std::mutex mutex_;  ///< guards what follows
  std::vector<Worker> idle_;
};

}  // namespace orvane
