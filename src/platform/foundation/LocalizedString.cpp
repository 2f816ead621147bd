#include "platform/foundation/LocalizedString.h"

#include <libintl.h>

#include <clocale>

namespace orvane::LocalizedString {
namespace {

constexpr const char* catalogue = "orvane-cli";
constexpr const char* systemCatalogue = "libc";  // the GNU C library's, used by strerror

}  // namespace

void takeUsersLocale() {
  std::setlocale(LC_ALL, "");
  for (const char* name : {catalogue, systemCatalogue}) bind_textdomain_codeset(name, "UTF-8");
}

std::string lookUp(const char* key, std::string_view defaultText) {
  const std::string_view found = dgettext(catalogue, key);
  return std::string(found == key || found.empty() ? defaultText : found);
}

std::string substituting(std::string_view format, std::string_view value) {
  std::string text(format);
  if (const auto place = text.find("%@"); place != std::string::npos) text.replace(place, 2, value);
  return text;
}

}  // namespace orvane::LocalizedString
