#include "batch/BatchRunner.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <memory>
#include <utility>

#include "batch/ExportFilenameAllocator.h"
#include "batch/SourceKeeper.h"
#include "platform/foundation/FileError.h"
#include "platform/foundation/OpenFiles.h"
#include "platform/foundation/ProcessInfo.h"
#include "platform/foundation/TaskGroup.h"

namespace orvane {
namespace {

std::vector<std::string> outputNames(std::span<const std::string> paths, ImageFormat format) {
  ExportFilenameAllocator allocator;
  std::vector<std::string> names;
  names.reserve(paths.size());
  for (const std::string& path : paths) {
    names.push_back(allocator.filename(FileURL::fromPath(path).baseName(), format.fileExtension()));
  }
  return names;
}

/// Open files that a run has whatever it does, some to spare.
constexpr std::int64_t filesOfTheRun = 16;

/// Files whose names wait for each other. A larger group saves next to no more time.
std::int64_t largestGroup(std::int64_t openFiles) {
  return std::clamp<std::int64_t>((openFiles - filesOfTheRun) / 8, 1, 32);
}

std::int64_t wantedJobs(const BatchOptions& options) {
  return options.jobs == 0 ? ProcessInfo::activeProcessorCount() : options.jobs;
}

/// As many jobs as are wanted, where so many files can be open. While one group gets its names, the
/// next gathers.
std::int64_t possibleJobs(std::int64_t openFiles, std::int64_t group, std::int64_t wanted) {
  constexpr std::int64_t filesOfAJob = 4;  // source, channel, shared memory, output
  const std::int64_t possible = (openFiles - filesOfTheRun - 2 * group) / filesOfAJob;
  return std::clamp<std::int64_t>(wanted, 1, std::max<std::int64_t>(possible, 1));
}

class Batch {
 public:
  Batch(std::span<const std::string> paths, const FileURL& to, ImageFormat format, double quality,
        const BatchOptions& options, const CompressFile& compress)
      : paths_(paths),
        to_(to),
        format_(format),
        quality_(quality),
        options_(options),
        largestGroup_(largestGroup(OpenFiles::limit())),
        jobs_(possibleJobs(OpenFiles::limit(), largestGroup_, wantedJobs(options))),
        compress_(compress),
        names_(outputNames(paths, format)),
        results_(paths.size()),
        isFinal_(paths.size()),
        sources_(paths, to, names_) {}

  std::vector<ImageCompressionResult> run() {
    startFiles();
    while (auto finished = group_.next()) {
      take(*std::move(finished));
      startCommit();
      startFiles();
    }
    cancelTheRest();
    return std::move(results_);
  }

 private:
  /// The outcome of a task: one file, or a group that has got its names.
  struct Finished {
    std::vector<std::size_t> indices;
    std::vector<ImageCompressor::Uncommitted> files;
    bool areCommitted = false;
  };

  void startFiles() {
    while (next_ < paths_.size() && std::cmp_less(atWork_, jobs_) &&
           std::cmp_less(written_.files.size(), largestGroup_) && !isStopped()) {
      group_.add([this, index = next_,
                  name = sources_.hiddenName(next_).value_or(names_[next_])]() -> Finished {
        Finished finished{.indices = {index}};
        finished.files.push_back(compress_(paths_[index], to_, format_, quality_, name));
        return finished;
      });
      ++next_;
      ++atWork_;
    }
  }

  bool isStopped() {
    isStopped_ = isStopped_ || (options_.isStopped && options_.isStopped());
    return isStopped_;
  }

  /// One group at a time. The next one gathers meanwhile.
  void startCommit() {
    if (isCommitting_ || written_.files.empty()) return;
    isCommitting_ = true;
    const auto group = std::make_shared<Finished>(std::exchange(written_, {}));
    group_.add([group]() -> Finished {
      ImageCompressor::commit(group->files);
      group->areCommitted = true;
      return std::move(*group);
    });
  }

  void take(Finished finished) {
    if (finished.areCommitted) {
      isCommitting_ = false;
      for (std::size_t i = 0; i < finished.indices.size(); ++i) {
        finish(finished.indices[i], std::move(finished.files[i].result));
      }
      return;
    }
    --atWork_;
    const std::size_t index = finished.indices.front();
    ImageCompressor::Uncommitted& file = finished.files.front();
    if (!file.output) return finish(index, std::move(file.result));
    written_.indices.push_back(index);
    written_.files.push_back(std::move(file));
  }

  void finish(std::size_t index, ImageCompressionResult result) {
    results_[index] = std::move(result);
    for (const std::size_t final : sources_.finish(index, results_)) tell(final);
  }

  void tell(std::size_t index) {
    isFinal_[index] = true;
    if (options_.onResult) options_.onResult(index, results_[index]);
  }

  /// After a stop: files that were not started, and outputs that waited for them.
  void cancelTheRest() {
    for (std::size_t index = 0; index < paths_.size(); ++index) {
      if (isFinal_[index]) continue;
      results_[index] = {.path = paths_[index],
                         .originalSizeBytes = ImageCompressor::fileSize(paths_[index]),
                         .error = FileError(ECANCELED).localizedDescription()};
      tell(index);
    }
  }

  std::span<const std::string> paths_;
  const FileURL& to_;
  ImageFormat format_;
  double quality_;
  const BatchOptions& options_;
  std::int64_t largestGroup_;
  std::int64_t jobs_;
  const CompressFile& compress_;
  std::vector<std::string> names_;
  std::vector<ImageCompressionResult> results_;
  std::vector<bool> isFinal_;  ///< the results that have been told
  SourceKeeper sources_;
  std::size_t next_ = 0;    ///< the file to start next
  std::size_t atWork_ = 0;  ///< files that are being compressed
  Finished written_;        ///< files that have not their names yet
  bool isCommitting_ = false;
  bool isStopped_ = false;
  TaskGroup<Finished> group_;  ///< last, so that its tasks end before the members that they use
};

}  // namespace

std::vector<ImageCompressionResult> compressAll(std::span<const std::string> paths,
                                                const FileURL& to, ImageFormat format,
                                                double quality, const BatchOptions& options,
                                                const CompressFile& compress) {
  return Batch(paths, to, format, quality, options, compress).run();
}

}  // namespace orvane
