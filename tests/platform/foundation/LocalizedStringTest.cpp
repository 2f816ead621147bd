#include "platform/foundation/LocalizedString.h"

#include <gtest/gtest.h>
#include <libintl.h>

#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string_view>

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

/// A message catalogue of one entry, as the GNU gettext manual lays it out ("The Format of GNU MO
/// Files"), without a hash table.
std::string catalogue(std::string_view key, std::string_view translation) {
  std::string file;
  const auto append = [&](std::size_t word) {
    const auto value = static_cast<std::uint32_t>(word);
    file.append(reinterpret_cast<const char*>(&value), sizeof value);
  };
  constexpr std::size_t headerSize = 28, tableSize = 8;
  constexpr std::size_t strings = headerSize + 2 * tableSize;
  for (const std::size_t word : {std::size_t{0x950412de}, std::size_t{0}, std::size_t{1},
                                 headerSize, headerSize + tableSize, std::size_t{0}, strings}) {
    append(word);
  }
  append(key.size());
  append(strings);
  append(translation.size());
  append(strings + key.size() + 1);
  file.append(key).push_back('\0');
  file.append(translation).push_back('\0');
  return file;
}

[[noreturn]] void sayTranslation() {
  const test::TemporaryFolder folder;
  const auto messages = folder.path() / "xx" / "LC_MESSAGES";
  std::filesystem::create_directories(messages);
  test::writeFile(messages / "orvane-cli.mo", catalogue("error.decodingFailed", "Unreadable."));
  setenv("LANGUAGE", "xx", 1);
  std::setlocale(LC_ALL, "C.UTF-8");
  bindtextdomain("orvane-cli", folder.path().c_str());
  // A newer C library translates nothing in C.UTF-8, and there may be no other locale.
  const char* key = "error.decodingFailed";
  if (dgettext("orvane-cli", key) == std::string_view(key)) {
    std::cerr << "no translations";
  } else {
    std::cerr << LocalizedString::lookUp(key, "Impossible.")
              << LocalizedString::lookUp("no.such.key", "Rien.");
  }
  std::filesystem::remove_all(folder.path());
  std::exit(0);
}

TEST(LocalizedStringDeathTest, isTheTranslationOfItsKeyWhereACatalogueHasOne) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(sayTranslation(), testing::ExitedWithCode(0),
              "^(Unreadable\\.Rien\\.|no translations)$");
}

}  // namespace
}  // namespace orvane
