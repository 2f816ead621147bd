#pragma once

#include <span>

#include "picture/ImageCompressionResult.h"

namespace orvane {

/// The report for machines, on standard output. Nothing at all where it cannot be encoded.
void printJSON(std::span<const ImageCompressionResult> results);

/// The report for people, on standard output.
void printHumanReadable(std::span<const ImageCompressionResult> results);

}  // namespace orvane
