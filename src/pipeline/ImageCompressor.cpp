#include "pipeline/ImageCompressor.h"

#include <algorithm>
#include <cerrno>
#include <new>

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

}  // namespace

std::int64_t fileSize(const std::string& path) { return Files::size(path).value_or(0); }

ImageCompressionResult compress(const std::string& path, const FileURL& to, ImageFormat format,
                                double quality,
                                const std::optional<std::string>& destinationFilename,
                                const CompressSource& compressSource) try {
  const CompressedFile file = compressSource(FileURL::fromPath(path).path(), format, quality);
  const FileURL destination =
      to.appending(destinationFilename.value_or(defaultFilename(path, format)));
  Files::writeAtomically(destination.path(), file.output);

  const auto compressedSize = static_cast<std::int64_t>(file.output.size());
  return {.path = path,
          .originalSizeBytes = file.sourceSize,
          .compressedSizeBytes = compressedSize,
          .ratio = 1 - static_cast<double>(compressedSize) /
                           static_cast<double>(std::max<std::int64_t>(file.sourceSize, 1)),
          .destination = destination.path()};
} catch (const LocalizedError& error) {
  return failure(path, error.localizedDescription());
} catch (const std::bad_alloc&) {
  return failure(path, FileError(ENOMEM).localizedDescription());
} catch (const std::exception&) {
  return failure(path, ImageProcessingError::encodingFailed(format).localizedDescription());
}

}  // namespace orvane::ImageCompressor
