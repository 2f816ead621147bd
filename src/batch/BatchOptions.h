#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace orvane {

struct ImageCompressionResult;

/// How a batch of files runs. None of it changes the bytes of an output.
struct BatchOptions {
  std::int64_t jobs = 0;  ///< files in work at once; 0 is the number of processors

  /// Is told each result once, with the index of its file, when it is final: the output has its
  /// name, or the file has failed. Files are told as they finish, on the thread that has started
  /// the batch, one at a time; files in work go on meanwhile. `result` lives during the call. An
  /// exception ends the batch and reaches the caller: files in work are finished first, and those
  /// that have not been told may or may not be written, each whole or not at all.
  std::function<void(std::size_t index, const ImageCompressionResult& result)> onResult = {};

  /// Is asked before each file is started, on the same thread. Once it says yes, no file is started
  /// any more: files in work are finished, the others fail with the system's text for ECANCELED. So
  /// does a file whose output would replace the source of one that was not started. It may throw as
  /// `onResult` may.
  std::function<bool()> isStopped = {};
};

}  // namespace orvane
