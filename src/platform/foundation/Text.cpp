#include "platform/foundation/Text.h"

#include <unicode/locid.h>
#include <unicode/unistr.h>

namespace orvane::Text {

std::string lowercased(std::string_view text) {
  std::string result;
  icu::UnicodeString::fromUTF8(text).toLower(icu::Locale::getRoot()).toUTF8String(result);
  return result;
}

}  // namespace orvane::Text
