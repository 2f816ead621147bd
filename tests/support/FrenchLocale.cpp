#include "support/FrenchLocale.h"

#include <cstdlib>

namespace orvane::test {

FrenchLocale::FrenchLocale(const std::string& charset) : name_("fr_FR." + charset) {
  const std::string command = "localedef -i fr_FR -f " + charset + " '" + folder_ / name_ + "'";
  // Warnings change the status; `exists` looks at the result instead.
  [[maybe_unused]] const int status = std::system((command + " >/dev/null 2>&1").c_str());
}

bool FrenchLocale::exists() const {
  return std::filesystem::exists(folder_.path() / name_ / "LC_NUMERIC");
}

}  // namespace orvane::test
