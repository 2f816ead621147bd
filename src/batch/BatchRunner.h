#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "batch/BatchOptions.h"
#include "picture/ImageCompressionResult.h"
#include "picture/ImageFormat.h"
#include "pipeline/ImageCompressor.h"
#include "platform/foundation/FileURL.h"

namespace orvane {

/// Compresses one file: `ImageCompressor::compressUncommitted`, or a test's stand-in. Called from
/// several threads at once; must not throw.
using CompressFile = std::function<ImageCompressor::Uncommitted(
    const std::string& path, const FileURL& to, ImageFormat format, double quality,
    const std::optional<std::string>& destinationFilename)>;

/// Compresses all files into the folder `to`, at most `jobs` at a time, one thread per file, fewer
/// where the process may not have so many files open. Outputs are named before any file is started,
/// and files are started in input order. Beside that, those that are written get their names, a
/// group at a time. An output never replaces a source that other files have still to read. Returns
/// one result per path, in input order; a file that fails says so in its result. Throws what
/// the functions of `options` throw, std::bad_alloc.
std::vector<ImageCompressionResult> compressAll(std::span<const std::string> paths,
                                                const FileURL& to, ImageFormat format,
                                                double quality, const BatchOptions& options,
                                                const CompressFile& compress);

}  // namespace orvane
