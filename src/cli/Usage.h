#pragma once

#include <cstdint>
#include <string>

namespace orvane {

/// The help text, without a newline at its end.
std::string usageText(std::int64_t processorCount);

/// Prints the help text for this machine on standard output. Throws FileError.
void printUsage();

}  // namespace orvane
