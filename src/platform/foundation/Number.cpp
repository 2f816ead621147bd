#include "platform/foundation/Number.h"

#include <locale.h>
#include <stdlib.h>

#include <array>
#include <charconv>
#include <cmath>
#include <system_error>
#include <type_traits>

#include "platform/foundation/Handle.h"

namespace orvane::Number {
namespace {

using Locale = Handle<std::remove_pointer_t<locale_t>, freelocale>;

bool isASCIIDigit(char character) { return character >= '0' && character <= '9'; }

/// The blanks that strtod skips.
bool isBlank(char character) {
  return std::string_view(" \t\n\v\f\r").find(character) != std::string_view::npos;
}

}  // namespace

std::optional<double> parseDouble(std::string_view text) {
  if (text.empty() || isBlank(text.front())) return std::nullopt;
  const Locale cLocale(newlocale(LC_ALL_MASK, "C", nullptr));
  const std::string terminated(text);
  char* end = nullptr;
  const double value = strtod_l(terminated.c_str(), &end, cLocale.get());
  if (end != terminated.c_str() + terminated.size()) return std::nullopt;
  return value;
}

std::optional<std::int64_t> parseInteger(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.empty() || !isASCIIDigit(text.front())) return std::nullopt;
  }
  std::int64_t value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
}

std::string description(double value) {
  if (std::isnan(value)) return "nan";
  const double magnitude = std::abs(value);
  const bool isPlain = value == 0 || (magnitude >= 1e-4 && magnitude < 1e16);
  std::array<char, 32> digits;
  const auto [end, error] =
      std::to_chars(digits.data(), digits.data() + digits.size(), value,
                    isPlain ? std::chars_format::fixed : std::chars_format::scientific);
  std::string text(digits.data(), end);
  if (isPlain && text.find('.') == std::string::npos) text += ".0";
  return text;
}

}  // namespace orvane::Number
