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

/// Keeps each source of a batch in place until every file that reads it is done. An output that
/// would replace it earlier waits beside it under a hidden name. Used by one thread.
class SourceKeeper {
 public:
  /// File i of the batch reads `paths[i]` and writes `names[i]` in the folder `to`. Which outputs
  /// replace which sources is found out here, before any file is written.
  SourceKeeper(std::span<const std::string> paths, const FileURL& to,
               std::span<const std::string> names);

  /// Must be called when file `index` is started. Returns the hidden name that its output must have
  /// for now, or no value when it may have its own name at once.
  std::optional<std::string> hiddenName(std::size_t index);

  /// Must be called when file `index` is done, with its result in `results`. Moves every output
  /// that need not wait any longer to its own name. If that fails, the output's result becomes a
  /// failure. Returns the files whose results are final now: this one, unless its output waits, and
  /// those whose outputs were moved.
  std::vector<std::size_t> finish(std::size_t index, std::span<ImageCompressionResult> results);

 private:
  struct Output {
    std::string path;
    std::optional<FileIdentity> replaced;  ///< the file at `path` when the batch begins
  };

  /// The number of unfinished files that read the file which `output` replaces.
  std::size_t readersLeft(const Output& output) const;

  /// Moves every waiting output that is written and has no readers left to its own name. Returns
  /// their files.
  std::vector<std::size_t> moveOutputs(std::span<ImageCompressionResult> results);

  std::vector<std::optional<FileIdentity>> sources_;
  std::vector<Output> outputs_;
  std::map<FileIdentity, std::size_t> readers_;   ///< number of unfinished files by source
  std::map<std::size_t, TemporaryFile> waiting_;  ///< hidden outputs by index
};

}  // namespace orvane
