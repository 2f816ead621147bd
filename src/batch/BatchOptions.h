#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stop_token>

namespace orvane {

struct ImageCompressionResult;

/// How a batch of files runs. None of it changes the bytes of an output.
struct BatchOptions {
  std::int64_t jobs = 0;  ///< files in work at once; 0 is the number of processors

  /// Is told each result once, with the index of its file, when it is final: the output has its
  /// name, or the file has failed. Files are told as they finish, on the thread that has started
  /// the batch, one at a time; files in work go on meanwhile. What it throws ends the batch and
  /// goes on to the caller: files in work are finished first, and those that have not been told may
  /// or may not be written, each whole or not at all.
  std::function<void(std::size_t index, const ImageCompressionResult& result)> onResult = {};

  /// Once a stop is requested, by any thread or by `onResult`, no further file is started. Files in
  /// work are finished; those that were not started fail with the system's text for ECANCELED. So
  /// does a file whose output would replace the source of one that was not started.
  std::stop_token stop = {};
};

}  // namespace orvane
