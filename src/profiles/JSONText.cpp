#include "profiles/JSONText.h"

#include "platform/foundation/Number.h"
#include "platform/foundation/Text.h"

namespace orvane::JSONText {
namespace {

std::string escaped(char character) {
  constexpr std::string_view named = "\"\\/\b\f\n\r\t";
  constexpr std::string_view names = "\"\\/bfnrt";
  constexpr std::string_view hexDigits = "0123456789abcdef";
  if (const auto at = named.find(character); at != named.npos) return {'\\', names[at]};
  const auto byte = static_cast<unsigned char>(character);
  if (byte >= 0x20) return {character};
  return {'\\', 'u', '0', '0', hexDigits[byte >> 4], hexDigits[byte & 15]};
}

}  // namespace

std::string string(std::string_view text) {
  std::string quoted = "\"";
  for (const char character : Text::wellFormed(text)) quoted += escaped(character);
  return quoted + '"';
}

std::string number(double value) {
  constexpr std::string_view noFraction = ".0";
  std::string digits = Number::description(value);
  if (digits.ends_with(noFraction)) digits.resize(digits.size() - noFraction.size());
  return digits;
}

}  // namespace orvane::JSONText
