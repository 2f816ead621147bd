#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "picture/ImageCompressionResult.h"
#include "picture/ImageFormat.h"
#include "platform/foundation/FileURL.h"

namespace orvane::ImageCompressor {

/// Size in bytes of the item at `path`; 0 when it cannot be examined.
std::int64_t fileSize(const std::string& path);

/// Compresses one file into the folder `to`. The output is named `destinationFilename` or, without
/// one, the source's base name with the format's extension. Never throws: a failure becomes the
/// result's `error`. Any number of calls may run at once.
ImageCompressionResult compress(const std::string& path, const FileURL& to, ImageFormat format,
                                double quality,
                                const std::optional<std::string>& destinationFilename);

}  // namespace orvane::ImageCompressor
