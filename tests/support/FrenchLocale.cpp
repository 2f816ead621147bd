#include "support/FrenchLocale.h"

#include <cstdlib>

namespace orvane::test {

FrenchLocale::FrenchLocale(const std::string& charset) : name_("fr_FR." + charset) {
  const std::string command = "localedef -i fr_FR -f " + charset + " '" + folder_ / name_ + "'";
  // Not by its status, which warnings change, but by what it has left is it judged.
  static_cast<void>(std::system((command + " >/dev/null 2>&1").c_str()));
}

bool FrenchLocale::exists() const {
  return std::filesystem::exists(folder_.path() / name_ / "LC_NUMERIC");
}

}  // namespace orvane::test
