#include "cli/BatchRunner.h"

#include <cstddef>
#include <utility>

#include "cli/SourceKeeper.h"
#include "platform/foundation/TaskGroup.h"
#include "profiles/ExportFilenameAllocator.h"

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

}  // namespace

std::vector<ImageCompressionResult> compressAll(std::span<const std::string> paths,
                                                const FileURL& to, ImageFormat format,
                                                double quality, std::int64_t jobs,
                                                const CompressFile& compress) {
  const std::vector<std::string> names = outputNames(paths, format);
  std::vector<ImageCompressionResult> results(paths.size());
  SourceKeeper sources(paths, to, names);
  std::size_t next = 0;

  using Finished = std::pair<std::size_t, ImageCompressionResult>;
  TaskGroup<Finished> group;
  const auto startNext = [&] {
    if (next == paths.size()) return;
    group.add(
        [&, index = next, name = sources.hiddenName(next).value_or(names[next])]() -> Finished {
          return {index, compress(paths[index], to, format, quality, name)};
        });
    ++next;
  };

  while (next < paths.size() && std::cmp_less(next, jobs)) startNext();
  while (auto finished = group.next()) {
    results[finished->first] = std::move(finished->second);
    sources.finish(finished->first, results);
    startNext();
  }
  return results;
}

}  // namespace orvane
