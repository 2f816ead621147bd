#include "profiles/ProfileCommand.h"

#include "profiles/JSONFileStore.h"
#include "support/ProfileStoreTest.h"
#include "support/TemporaryFolder.h"

namespace orvane {
namespace {

using JSONFileStore::loadProfiles;
using ProfileCommandTest = test::ProfileStoreTest;

template <typename Command>
std::string errorOf(Command command) {
  try {
    command();
  } catch (const ProfileCommandError& error) {
    return error.localizedDescription();
  }
  return "no error";
}

TEST_F(ProfileCommandTest, storesATrimmedNameAndConfirms) {
  EXPECT_EQ(createProfile("\u00a0 Web \u2028\n", "WEBP", "80", std::nullopt),
            "Profil « Web » enregistré (webp, qualité 80).");
  const auto profiles = loadProfiles();
  ASSERT_EQ(profiles.size(), 1u);
  EXPECT_EQ(profiles[0],
            (ExportProfile{
                .id = profiles[0].id, .name = "Web", .format = ImageFormat::webp, .quality = 80}));
}

TEST_F(ProfileCommandTest, storesAFolderAsAnAbsolutePath) {
  const test::TemporaryFolder parent;
  std::filesystem::create_directory(parent / "archive");
  EXPECT_EQ(createProfile("Archive", "jxl", "90.75", (parent / "archive") + "/"),
            "Profil « Archive » enregistré (jxl, qualité 90, dossier " + parent / "archive" + ").");
  EXPECT_EQ(loadProfiles()[0].destinationFolder(), FileURL::fromPath(parent / "archive"));
  EXPECT_EQ(loadProfiles()[0].quality, 90.75);
}

TEST_F(ProfileCommandTest, storesNoFolderWithoutAnAbsolutePath) {
  const auto former = std::filesystem::current_path();
  const test::TemporaryFolder current;
  std::filesystem::current_path(current.path());
  std::filesystem::remove(current.path());
  EXPECT_EQ(errorOf([] { createProfile("Web", "webp", "80", "."); }),
            "--output doit être un dossier existant : .");
  std::filesystem::current_path(former);
  EXPECT_TRUE(loadProfiles().empty());
}

TEST_F(ProfileCommandTest, replacesTheFirstProfileOfThatNameWhereItStands) {
  const ExportProfile first{
      .id = UUID::random(), .name = "A", .format = ImageFormat::png, .quality = 1};
  const ExportProfile web{.id = UUID::random(),
                          .name = "Web",
                          .format = ImageFormat::webp,
                          .quality = 80,
                          .destinationFolderURL = FileURL::fromPath("/F").folderURLString(),
                          .isDefault = true};
  const ExportProfile otherWeb{
      .id = UUID::random(), .name = "WEB", .format = ImageFormat::avif, .quality = 2};
  JSONFileStore::save(std::vector{first, web, otherWeb}, JSONFileStore::profilesFilename);

  EXPECT_EQ(createProfile(" web ", "jpeg", "70", std::nullopt),
            "Profil « web » enregistré (jpeg, qualité 70).");
  const ExportProfile replaced{
      .id = web.id, .name = "web", .format = ImageFormat::jpeg, .quality = 70, .isDefault = true};
  EXPECT_EQ(loadProfiles(), (std::vector{first, replaced, otherWeb}));
}

TEST_F(ProfileCommandTest, addsANewProfileAtTheEnd) {
  createProfile("A", "png", "1", std::nullopt);
  createProfile("B", "png", "100", std::nullopt);
  createProfile("Á", "png", "50", std::nullopt);
  const auto profiles = loadProfiles();
  ASSERT_EQ(profiles.size(), 3u);
  EXPECT_EQ(profiles[2].name, "Á");
  EXPECT_FALSE(profiles[0].id == profiles[1].id);
}

TEST_F(ProfileCommandTest, checksNameFormatQualityAndFolderInThisOrder) {
  const std::string noName = "--create-profile attend un nom non vide.";
  const std::string noFormat = "--create-profile nécessite --format <png|jpeg|heic|avif|webp|jxl>.";
  const std::string noQuality = "--create-profile nécessite --quality <1-100>.";
  const std::string noFolder = "--output doit être un dossier existant : /no/such";
  const auto create = [](const char* name, std::optional<std::string> format,
                         std::optional<std::string> quality, std::optional<std::string> output) {
    return errorOf([&] { createProfile(name, format, quality, output); });
  };
  EXPECT_EQ(create(" \u3000\t", {}, {}, "/no/such"), noName);
  EXPECT_EQ(create("", {}, {}, {}), noName);
  EXPECT_EQ(create("A", {}, {}, "/no/such"), noFormat);
  EXPECT_EQ(create("A", "jpg", "0", {}), noFormat);
  EXPECT_EQ(create("A", "", "80", {}), noFormat);
  EXPECT_EQ(create("A", "png", {}, "/no/such"), noQuality);
  EXPECT_EQ(create("A", "png", "80", "/no/such"), noFolder);
  EXPECT_EQ(create("A", "png", "80", ""), "--output doit être un dossier existant : ");
  EXPECT_FALSE(std::filesystem::exists(folder()));
}

TEST_F(ProfileCommandTest, refusesAQualityThatIsNoNumberFrom1To100) {
  for (const std::string quality : {"0.5", "101", "8,5", " 80", "80 ", "", "nan", "inf", "-1",
                                    "80%", "quatre-vingts", "100.0001"}) {
    EXPECT_EQ(errorOf([&] { createProfile("A", "png", quality, std::nullopt); }),
              "--create-profile nécessite --quality <1-100>.")
        << quality;
  }
  for (const std::string quality : {"1", "100", "62.5", "1e2", "+80"}) {
    EXPECT_EQ(errorOf([&] { createProfile("A", "png", quality, std::nullopt); }), "no error");
  }
}

TEST_F(ProfileCommandTest, refusesAFileAsFolder) {
  const test::TemporaryFolder parent;
  test::writeFile(parent / "file", "");
  EXPECT_EQ(errorOf([&] { createProfile("A", "png", "80", parent / "file"); }),
            "--output doit être un dossier existant : " + parent / "file");
}

TEST_F(ProfileCommandTest, readsItsOperandsInAnyOrderTheLastOneWinning) {
  const std::vector<std::string> arguments{"--create-profile", "--format", "--quality", "10",
                                           "--format",         "png",      "--quality", "62.5",
                                           "--format",         "jpeg"};
  EXPECT_EQ(runProfileCommand(arguments), "Profil « --format » enregistré (jpeg, qualité 62).");
}

TEST_F(ProfileCommandTest, takesBackAnOptionThatEndsTheCommandLine) {
  const std::vector<std::string> arguments{"--create-profile", "A",  "--format", "png",
                                           "--quality",        "80", "--format"};
  EXPECT_EQ(errorOf([&] { runProfileCommand(arguments); }),
            "--create-profile nécessite --format <png|jpeg|heic|avif|webp|jxl>.");
}

TEST_F(ProfileCommandTest, refusesOperandsThatItDoesNotKnowBeforeAnythingElse) {
  const std::vector<std::string> arguments{"--create-profile", "", "--format", "png", "--json"};
  EXPECT_EQ(errorOf([&] { runProfileCommand(arguments); }),
            "Option inconnue pour --create-profile : --json");
}

TEST_F(ProfileCommandTest, showsItsUsageWithoutAName) {
  EXPECT_EQ(errorOf([] { runProfileCommand(std::vector<std::string>{"--create-profile"}); }),
            "Usage : orvane-cli --create-profile <nom> [--format <format>] [--quality <1-100>] "
            "[--output <dossier>]");
}

}  // namespace
}  // namespace orvane
