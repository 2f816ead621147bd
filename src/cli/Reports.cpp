#include "cli/Reports.h"

#include "cli/Console.h"
#include "profiles/CompressionReports.h"

namespace orvane {

void printJSON(std::span<const ImageCompressionResult> results) {
  if (const auto report = CompressionReports::renderJSON(results)) Console::print(*report);
}

void printHumanReadable(std::span<const ImageCompressionResult> results) {
  Console::print(CompressionReports::renderHumanReadable(results));
}

}  // namespace orvane
