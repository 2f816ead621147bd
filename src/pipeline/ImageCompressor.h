#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "picture/ImageCompressionResult.h"
#include "picture/ImageFormat.h"
#include "pipeline/Compression.h"
#include "platform/foundation/AtomicFile.h"
#include "platform/foundation/FileURL.h"

namespace orvane::ImageCompressor {

/// Turns the file at `path` into its output: `compressHere`, or the same in another process. Throws
/// LocalizedError, std::bad_alloc. Any number of calls may run at once.
using CompressSource =
    std::function<CompressedFile(const std::string& path, ImageFormat format, double quality)>;

/// Size in bytes of the item at `path`; 0 when it cannot be examined.
std::int64_t fileSize(const std::string& path);

/// Compresses one file into the folder `to`. The output is named `destinationFilename` or, without
/// one, the source's base name with the format's extension. Never throws: a failure becomes the
/// result's `error`. Any number of calls may run at once.
ImageCompressionResult compress(const std::string& path, const FileURL& to, ImageFormat format,
                                double quality,
                                const std::optional<std::string>& destinationFilename,
                                const CompressSource& compressSource = compressHere);

/// A result whose output is written beside its destination but has not its name yet; without an
/// output it is final.
struct Uncommitted {
  ImageCompressionResult result;
  std::unique_ptr<AtomicFile> output;
};

/// `compress` in two steps. The second takes many files at once, for it waits for their medium:
/// it flushes all of them, then names all. A failure becomes that file's `error`.
Uncommitted compressUncommitted(const std::string& path, const FileURL& to, ImageFormat format,
                                double quality,
                                const std::optional<std::string>& destinationFilename,
                                const CompressSource& compressSource = compressHere);
void commit(std::span<Uncommitted> files);

}  // namespace orvane::ImageCompressor
