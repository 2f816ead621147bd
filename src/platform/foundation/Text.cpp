#include "platform/foundation/Text.h"

#include <unicode/locid.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/unorm2.h>
#include <unicode/utf8.h>

#include <cstdint>

namespace orvane::Text {
namespace {

icu::UnicodeString lower(std::string_view text) {
  return icu::UnicodeString::fromUTF8(text).toLower(icu::Locale::getRoot());
}

}  // namespace

std::string lowercased(std::string_view text) {
  std::string result;
  return lower(text).toUTF8String(result);
}

std::string nameKey(std::string_view name) {
  UErrorCode status = U_ZERO_ERROR;
  std::string result;
  return icu::Normalizer2::getNFCInstance(status)
      ->normalize(lower(name), status)
      .toUTF8String(result);
}

bool equalsIgnoringCase(std::string_view left, std::string_view right) {
  const auto a = icu::UnicodeString::fromUTF8(left);
  const auto b = icu::UnicodeString::fromUTF8(right);
  UErrorCode status = U_ZERO_ERROR;
  return unorm_compare(a.getBuffer(), a.length(), b.getBuffer(), b.length(), U_COMPARE_IGNORE_CASE,
                       &status) == 0 &&
         U_SUCCESS(status);
}

std::string trimmed(std::string_view text) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  auto end = static_cast<std::int32_t>(text.size());
  std::int32_t begin = 0;
  UChar32 character = 0;
  for (std::int32_t next = 0; next < end; begin = next) {
    U8_NEXT(bytes, next, end, character);
    if (!u_isUWhiteSpace(character)) break;
  }
  for (std::int32_t next = end; next > begin; end = next) {
    U8_PREV(bytes, begin, next, character);
    if (!u_isUWhiteSpace(character)) break;
  }
  return std::string(
      text.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin)));
}

std::string withoutControlCharacters(std::string_view text) {
  auto characters = icu::UnicodeString::fromUTF8(text);
  for (std::int32_t at = 0; at < characters.length(); ++at) {
    if (u_charType(characters[at]) == U_CONTROL_CHAR) characters.setCharAt(at, u'?');
  }
  std::string result;
  return characters.toUTF8String(result);
}

std::string wellFormed(std::string_view text) {
  std::string result;
  icu::UnicodeString::fromUTF8(text).toUTF8String(result);
  return result;
}

}  // namespace orvane::Text
