#pragma once

#include <optional>
#include <span>
#include <string>

#include "picture/ImageCompressionResult.h"

/// The two forms in which a run tells what became of its files. Neither ends in a newline.
namespace orvane::CompressionReports {

/// An array of one object per result, keys sorted, two spaces of indentation. Nothing when a ratio
/// is NaN or infinite: JSON has no such numbers.
std::optional<std::string> renderJSON(std::span<const ImageCompressionResult> results);

/// One line per result in French, an empty line and a summary. Sizes speak the user's language.
std::string renderHumanReadable(std::span<const ImageCompressionResult> results);

}  // namespace orvane::CompressionReports
