#pragma once

#include <span>

#include "picture/ImageCompressionResult.h"

namespace orvane {

/// Prints the JSON report on standard output, or nothing when it cannot be encoded. Throws
/// FileError.
void printJSON(std::span<const ImageCompressionResult> results);

/// Prints the readable report on standard output. On a terminal, the control characters of names
/// are replaced by "?". Throws FileError.
void printHumanReadable(std::span<const ImageCompressionResult> results);

}  // namespace orvane
