#include "profiles/CompressionReports.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

#include "platform/foundation/ByteCountFormatter.h"
#include "profiles/JSONText.h"

namespace orvane::CompressionReports {
namespace {

using Result = ImageCompressionResult;

void addMember(std::string& object, std::string_view key, const std::string& value) {
  object += object.empty() ? "" : ",\n";
  object += "    " + JSONText::string(key) + " : " + value;
}

std::string jsonObject(const Result& result) {
  std::string members;
  if (result.compressedSizeBytes) {
    addMember(members, "compressedSizeBytes", std::to_string(*result.compressedSizeBytes));
  }
  if (result.destination) {
    addMember(members, "destination", JSONText::string(*result.destination));
  }
  if (result.error) addMember(members, "error", JSONText::string(*result.error));
  addMember(members, "originalSizeBytes", std::to_string(result.originalSizeBytes));
  addMember(members, "path", JSONText::string(result.path));
  if (result.ratio) addMember(members, "ratio", JSONText::number(*result.ratio));
  return "  {\n" + members + "\n  }";
}

/// "-43%" for a file that has lost 42.5 % of its bytes, "+10%" for one that has grown by a tenth.
std::string signedPercentage(double ratio) {
  // The largest double has max_exponent10 + 1 digits.
  std::array<char, std::numeric_limits<double>::max_exponent10 + 2> digits;
  const double percentage = std::round(std::abs(ratio) * 100);
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), percentage,
                                          std::chars_format::fixed);
  return (ratio < 0 ? "+" : "-") + std::string(digits.data(), end) + "%";
}

std::string line(const Result& result, const ByteCountFormatter& sizes) {
  if (result.error) return result.path + " : échec — " + *result.error;
  return result.path + " : " + sizes.string(result.originalSizeBytes) + " → " +
         sizes.string(result.compressedSizeBytes.value_or(0)) + " (" +
         signedPercentage(result.ratio.value_or(0)) + ") → " + result.destination.value_or("");
}

}  // namespace

std::optional<std::string> renderJSON(std::span<const Result> results) {
  std::string objects;
  for (const Result& result : results) {
    if (result.ratio && !std::isfinite(*result.ratio)) return std::nullopt;
    objects += (objects.empty() ? "" : ",\n") + jsonObject(result);
  }
  return "[\n" + objects + "\n]";
}

std::string renderHumanReadable(std::span<const Result> results) {
  const ByteCountFormatter sizes;
  std::string report;
  for (const Result& result : results) report += line(result, sizes) + "\n";
  const auto failures =
      std::ranges::count_if(results, [](const Result& result) { return result.error.has_value(); });
  return report + "\n" + std::to_string(results.size()) + " fichier(s) traité(s), " +
         std::to_string(failures) + " échec(s).";
}

}  // namespace orvane::CompressionReports
