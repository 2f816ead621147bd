#pragma once

#include <optional>
#include <span>
#include <string>

#include "picture/ImageCompressionResult.h"

/// The report of a run, in two forms. Neither ends in a newline.
namespace orvane::CompressionReports {

/// A JSON array with one object per result: keys sorted, two spaces of indentation. Returns no
/// value when a ratio is NaN or infinite, for JSON has no such numbers.
std::optional<std::string> renderJSON(std::span<const ImageCompressionResult> results);

/// One line per result in French, an empty line and a summary. Units of size are in the user's
/// language.
std::string renderHumanReadable(std::span<const ImageCompressionResult> results);

}  // namespace orvane::CompressionReports
