#include "platform/foundation/LocalizedString.h"

#include <gtest/gtest.h>
#include <libintl.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <map>
#include <string>

#include "platform/foundation/FileError.h"
#include "support/FrenchLocale.h"
#include "support/TemporaryFolder.h"

namespace orvane {
namespace {

TEST(LocalizedString, isTheDefaultTextWithoutACatalogue) {
  EXPECT_EQ(LocalizedString::lookUp("error.decodingFailed", "Impossible."), "Impossible.");
  EXPECT_EQ(LocalizedString::lookUp("no.such.key", ""), "");
}

TEST(LocalizedString, takesAValueForItsFirstPlaceholder) {
  EXPECT_EQ(LocalizedString::substituting("Profil introuvable : %@", "Web"),
            "Profil introuvable : Web");
  EXPECT_EQ(LocalizedString::substituting("%@ et %@", "un"), "un et %@");
  EXPECT_EQ(LocalizedString::substituting("%@", "100 %@"), "100 %@");
  EXPECT_EQ(LocalizedString::substituting("rien", "Web"), "rien");
  EXPECT_EQ(LocalizedString::substituting("", "Web"), "");
}

/// A message catalogue, as the GNU gettext manual lays it out ("The Format of GNU MO Files"),
/// without a hash table.
std::string catalogue(std::map<std::string, std::string> translations) {
  translations[""] = "Content-Type: text/plain; charset=UTF-8\n";
  std::string words, keys, values;
  const auto append = [&words](std::size_t word) {
    const auto value = static_cast<std::uint32_t>(word);
    words.append(reinterpret_cast<const char*>(&value), sizeof value);
  };
  for (const auto& [key, value] : translations) {
    keys.append(key).push_back('\0');
    values.append(value).push_back('\0');
  }
  constexpr std::size_t headerSize = 28;
  const std::size_t tableSize = 8 * translations.size();
  const std::size_t keyStart = headerSize + 2 * tableSize;
  for (const std::size_t word : {std::size_t{0x950412de}, std::size_t{0}, translations.size(),
                                 headerSize, headerSize + tableSize, std::size_t{0}, keyStart}) {
    append(word);
  }
  std::size_t at = keyStart;
  const auto appendEntry = [&](const std::string& text) {
    append(text.size());
    append(at);
    at += text.size() + 1;
  };
  for (const auto& [key, value] : translations) appendEntry(key);
  for (const auto& [key, value] : translations) appendEntry(value);
  return words + keys + values;
}

[[noreturn]] void sayTranslations() {
  {
    const test::FrenchLocale locale("ISO-8859-1");
    const test::TemporaryFolder folder;
    const auto messages = folder.path() / "xx" / "LC_MESSAGES";
    std::filesystem::create_directories(messages);
    test::writeFile(messages / "orvane-cli.mo", catalogue({{"error.decodingFailed", "Raté."}}));
    test::writeFile(messages / "libc.mo", catalogue({{"Permission denied", "Défendu."}}));
    setenv("LOCPATH", locale.locpath().c_str(), 1);
    setenv("LC_ALL", locale.name().c_str(), 1);
    setenv("LANGUAGE", "xx", 1);
    LocalizedString::takeUsersLocale();
    bindtextdomain("orvane-cli", folder.path().c_str());
    bindtextdomain("libc", folder.path().c_str());
    std::cerr << LocalizedString::lookUp("error.decodingFailed", "Impossible.")
              << LocalizedString::lookUp("no.such.key", "Rien.") << FileError(EACCES).what();
  }
  std::exit(0);
}

TEST(LocalizedStringDeathTest, isTheTranslationOfItsKeyInUTF8WhereACatalogueHasOne) {
  if (!test::FrenchLocale("ISO-8859-1").exists()) {
    GTEST_SKIP() << "no French locale can be compiled here";
  }
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(sayTranslations(), testing::ExitedWithCode(0), "^Raté\\.Rien\\.Défendu\\.$");
}

}  // namespace
}  // namespace orvane
