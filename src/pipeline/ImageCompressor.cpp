#include "pipeline/ImageCompressor.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <utility>

#include "picture/ImageProcessingError.h"
#include "platform/foundation/FileError.h"
#include "platform/foundation/Files.h"

namespace orvane::ImageCompressor {
namespace {

std::string defaultFilename(const std::string& path, ImageFormat format) {
  return std::string(FileURL::fromPath(path).baseName()) + "." +
         std::string(format.fileExtension());
}

ImageCompressionResult failure(const std::string& path, const std::string& description) {
  return {.path = path, .originalSizeBytes = fileSize(path), .error = description};
}

/// Takes a step of the files that have not failed. A failure makes a file's result final.
void forEach(std::span<Uncommitted> files, void (AtomicFile::*step)()) {
  for (Uncommitted& file : files) {
    if (!file.output) continue;
    try {
      (*file.output.*step)();
    } catch (const FileError& error) {
      file = {.result = failure(file.result.path, error.localizedDescription())};
    }
  }
}

}  // namespace

std::int64_t fileSize(const std::string& path) { return Files::size(path).value_or(0); }

Uncommitted compressUncommitted(const std::string& path, const FileURL& to, ImageFormat format,
                                double quality,
                                const std::optional<std::string>& destinationFilename,
                                const CompressSource& compressSource) try {
  const CompressedFile file = compressSource(FileURL::fromPath(path).path(), format, quality);
  const FileURL destination =
      to.appending(destinationFilename.value_or(defaultFilename(path, format)));
  auto output = std::make_unique<AtomicFile>(destination.path());
  output->write(file.output);

  const auto compressedSize = static_cast<std::int64_t>(file.output.size());
  return {
      .result = {.path = path,
                 .originalSizeBytes = file.sourceSize,
                 .compressedSizeBytes = compressedSize,
                 .ratio = 1 - static_cast<double>(compressedSize) /
                                  static_cast<double>(std::max<std::int64_t>(file.sourceSize, 1)),
                 .destination = destination.path()},
      .output = std::move(output)};
} catch (const LocalizedError& error) {
  return {.result = failure(path, error.localizedDescription())};
} catch (const std::bad_alloc&) {
  return {.result = failure(path, FileError(ENOMEM).localizedDescription())};
} catch (const std::exception&) {
  return {.result =
              failure(path, ImageProcessingError::encodingFailed(format).localizedDescription())};
}

void commit(std::span<Uncommitted> files) {
  forEach(files, &AtomicFile::flush);
  forEach(files, &AtomicFile::move);
  for (Uncommitted& file : files) file.output.reset();
}

ImageCompressionResult compress(const std::string& path, const FileURL& to, ImageFormat format,
                                double quality,
                                const std::optional<std::string>& destinationFilename,
                                const CompressSource& compressSource) {
  Uncommitted file =
      compressUncommitted(path, to, format, quality, destinationFilename, compressSource);
  commit({&file, 1});
  return std::move(file.result);
}

}  // namespace orvane::ImageCompressor
