#include "batch/SourceKeeper.h"

#include <unistd.h>

#include <filesystem>

#include "platform/foundation/FileError.h"

namespace orvane {
namespace {

/// Creates an empty file, whose permissions are those of the file that it will replace. The output
/// is written over it and takes them on.
void createEmpty(TemporaryFile& file) {
  try {
    file.create();
  } catch (const FileError&) {
    // Writing the output fails for the same reason, and its result says so.
  }
}

void moveToDestination(TemporaryFile& file, ImageCompressionResult& result) try {
  file.moveToDestination();
} catch (const FileError& error) {
  result = {.path = result.path,
            .originalSizeBytes = result.originalSizeBytes,
            .error = error.localizedDescription()};
}

}  // namespace

SourceKeeper::SourceKeeper(std::span<const std::string> paths, const FileURL& to,
                           std::span<const std::string> names) {
  for (std::size_t index = 0; index < paths.size(); ++index) {
    sources_.push_back(FileIdentity::of(FileURL::fromPath(paths[index]).path()));
    if (sources_.back()) ++readers_[*sources_.back()];
    const std::string output = to.appending(names[index]).path();
    outputs_.push_back({.path = output, .replaced = FileIdentity::of(output)});
  }
}

std::optional<std::string> SourceKeeper::hiddenName(std::size_t index) {
  const Output& output = outputs_[index];
  const bool replacesItsSource = output.replaced && output.replaced == sources_[index];
  if (readersLeft(output) == (replacesItsSource ? 1 : 0)) return std::nullopt;
  TemporaryFile& file = waiting_.try_emplace(index, output.path).first->second;
  createEmpty(file);
  return std::filesystem::path(file.path()).filename();
}

std::vector<std::size_t> SourceKeeper::finish(std::size_t index,
                                              std::span<ImageCompressionResult> results) {
  if (sources_[index]) --readers_[*sources_[index]];
  if (results[index].error) waiting_.erase(index);
  const bool waits = waiting_.contains(index);
  if (waits) results[index].destination = outputs_[index].path;
  std::vector<std::size_t> final = moveOutputs(results);
  if (!waits) final.insert(final.begin(), index);
  return final;
}

std::vector<std::size_t> SourceKeeper::moveOutputs(std::span<ImageCompressionResult> results) {
  std::vector<std::size_t> moved;
  for (auto next = waiting_.begin(); next != waiting_.end();) {
    const auto output = next++;
    ImageCompressionResult& result = results[output->first];
    const bool isWritten = result.destination.has_value();
    if (!isWritten || readersLeft(outputs_[output->first]) > 0) continue;
    moveToDestination(output->second, result);
    moved.push_back(output->first);
    waiting_.erase(output);
  }
  return moved;
}

std::size_t SourceKeeper::readersLeft(const Output& output) const {
  const auto found = output.replaced ? readers_.find(*output.replaced) : readers_.end();
  return found == readers_.end() ? 0 : found->second;
}

}  // namespace orvane
