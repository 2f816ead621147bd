#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "picture/ImageCompressionResult.h"
#include "platform/foundation/FileIdentity.h"
#include "platform/foundation/FileURL.h"
#include "platform/foundation/TemporaryFile.h"

namespace orvane {

/// Keeps each source of a batch as it is until every file that reads it is done: an output that
/// takes the place of another file's source waits beside it under a hidden name. One thread's.
class SourceKeeper {
 public:
  /// File i of the batch reads `paths[i]` and is to be written to `names[i]` in the folder `to`.
  SourceKeeper(std::span<const std::string> paths, const FileURL& to,
               std::span<const std::string> names);

  /// To be called when file `index` is started: the hidden name to write it under in the folder.
  /// Nothing when it may be written under its own name.
  std::optional<std::string> hiddenName(std::size_t index);

  /// To be called when file `index` is done and its result stands in `results`. Gives every output
  /// that need not wait any longer its own name; where that fails, its result becomes a failure.
  void finish(std::size_t index, std::span<ImageCompressionResult> results);

 private:
  struct Output {
    std::string path;
    std::optional<FileIdentity> replaced;  ///< what lies at `path` when the batch begins
  };

  /// How many files that are not done read what `output` replaces.
  std::size_t readersLeft(const Output& output) const;

  /// Gives its own name to each waiting output that is written and replaces no source any more.
  void moveOutputs(std::span<ImageCompressionResult> results);

  std::vector<std::optional<FileIdentity>> sources_;
  std::vector<Output> outputs_;
  std::map<FileIdentity, std::size_t> readers_;   ///< files that are not done, by their source
  std::map<std::size_t, TemporaryFile> waiting_;  ///< outputs under hidden names, by index
};

}  // namespace orvane
