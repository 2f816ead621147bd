#include "platform/foundation/LocalizedString.h"

#include <libintl.h>

namespace orvane::LocalizedString {

std::string lookUp(const char* key, std::string_view defaultText) {
  const std::string_view found = dgettext("orvane-cli", key);
  return std::string(found == key || found.empty() ? defaultText : found);
}

std::string substituting(std::string_view format, std::string_view value) {
  std::string text(format);
  if (const auto place = text.find("%@"); place != std::string::npos) text.replace(place, 2, value);
  return text;
}

}  // namespace orvane::LocalizedString
