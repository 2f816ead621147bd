#include "cli/Reports.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "cli/Console.h"
#include "platform/foundation/Text.h"
#include "profiles/CompressionReports.h"

namespace orvane {
namespace {

void replaceControlCharacters(std::optional<std::string>& text) {
  if (text) text = Text::withoutControlCharacters(*text);
}

/// Errors may hold names too.
ImageCompressionResult fitForTerminal(ImageCompressionResult result) {
  result.path = Text::withoutControlCharacters(result.path);
  replaceControlCharacters(result.destination);
  replaceControlCharacters(result.error);
  return result;
}

}  // namespace

void printJSON(std::span<const ImageCompressionResult> results) {
  if (const auto report = CompressionReports::renderJSON(results)) Console::print(*report);
}

void printHumanReadable(std::span<const ImageCompressionResult> results) {
  std::vector<ImageCompressionResult> shown(results.begin(), results.end());
  if (Console::printsToTerminal()) std::ranges::transform(shown, shown.begin(), fitForTerminal);
  Console::print(CompressionReports::renderHumanReadable(shown));
}

}  // namespace orvane
