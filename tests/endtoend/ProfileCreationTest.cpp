// The profile command, and the file that it shares with other programs.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <regex>

#include "platform/foundation/FileURL.h"
#include "support/FrenchLocale.h"
#include "support/RunTool.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;
using test::ToolRun;

struct ProfileCreationEndToEnd : testing::Test {
  test::Tool tool;

  ToolRun create(const Arguments& operands) {
    Arguments arguments{"--create-profile"};
    arguments.insert(arguments.end(), operands.begin(), operands.end());
    return tool.run(arguments);
  }

  void expectCreated(const Arguments& operands, const std::string& confirmation) {
    const ToolRun run = create(operands);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, confirmation + "\n");
    EXPECT_EQ(run.errors, "");
  }

  void expectRefused(const Arguments& operands, const std::string& message) {
    const bool hadProfiles = fs::exists(tool.profileFile());
    const std::string before = hadProfiles ? profilesText() : "";
    const ToolRun run = create(operands);
    EXPECT_EQ(run.status, 64);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, message + "\n");
    EXPECT_EQ(run.errorWrites, 1u);
    ASSERT_EQ(fs::exists(tool.profileFile()), hadProfiles);
    EXPECT_EQ(hadProfiles ? profilesText() : "", before);
  }

  std::string profilesText() const {
    const Bytes bytes = test::readFile(tool.profileFile());
    return std::string(bytes.begin(), bytes.end());
  }

  void writeProfiles(const std::string& json) const {
    fs::create_directories(tool.profileFile().parent_path());
    test::writeFile(tool.profileFile(), json);
  }

  /// The file's text with every new identifier, a random UUID in upper case, as "<new>".
  std::string profilesWithoutNewIDs() const {
    const std::regex uuid("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    return std::regex_replace(profilesText(), uuid, "<new>");
  }

  Arguments storeNames() const {
    Arguments names;
    for (const auto& entry : fs::directory_iterator(tool.profileFile().parent_path())) {
      names.push_back(entry.path().filename());
    }
    return names;
  }
};

const std::string noName = "--create-profile attend un nom non vide.";
const std::string noFormat = "--create-profile nécessite --format <png|jpeg|heic|avif|webp|jxl>.";
const std::string noQuality = "--create-profile nécessite --quality <1-100>.";

TEST_F(ProfileCreationEndToEnd, writesAFileOfOneLine) {
  expectCreated({"  Web  ", "--format", "WEBP", "--quality", "80"},
                "Profil « Web » enregistré (webp, qualité 80).");
  EXPECT_EQ(profilesWithoutNewIDs(),
            R"([{"id":"<new>","name":"Web","format":"webp","quality":80,"isDefault":false}])");
  EXPECT_EQ(storeNames(), Arguments{"exportProfiles.json"});
  EXPECT_EQ(tool.folder.names(), Arguments());
}

TEST_F(ProfileCreationEndToEnd, writesTheFolderAsAFileURLWithItsSlashesEscaped) {
  fs::create_directory(tool.folder / "Mes été");
  const std::string folder = tool.folder / "Mes été";
  expectCreated(
      {"Archive \"1/2\"", "--quality", "62.5", "--format", "jxl", "--output", "./Mes été/"},
      "Profil « Archive \"1/2\" » enregistré (jxl, qualité 62, dossier " + folder + ").");
  const std::string url =
      std::regex_replace(FileURL::fromPath(folder).folderURLString(), std::regex("/"), "\\/");
  EXPECT_TRUE(url.ends_with("\\/Mes%20%C3%A9t%C3%A9\\/")) << url;
  EXPECT_EQ(profilesWithoutNewIDs(), R"([{"id":"<new>","name":"Archive \"1\/2\"","format":"jxl",)"
                                     R"("quality":62.5,"destinationFolder":")" +
                                         url + R"(","isDefault":false}])");
}

TEST_F(ProfileCreationEndToEnd, replacesAProfileOfThatNameAndKeepsTheOthers) {
  const std::string first = R"({"id":"6BA7B810-9DAD-11D1-80B4-00C04FD430C8","name":"Été",)"
                            R"("format":"png","quality":1.5,)"
                            R"("destinationFolder":"file:\/\/\/a%20b\/","isDefault":false})";
  writeProfiles("[\n  " + first + R"(,
  { "isDefault" : true, "quality" : 80.0, "note" : {"by": "somebody"},
    "destinationFolder" : "file:///x/", "format" : "webp", "name" : "Web",
    "id" : "00000000-0000-0000-0000-0000000000ab" }
]
)");
  expectCreated({"web", "--format", "webp", "--quality", "70"},
                "Profil « web » enregistré (webp, qualité 70).");
  const std::string web = R"({"id":"00000000-0000-0000-0000-0000000000AB","name":"web",)"
                          R"("format":"webp","quality":70,"isDefault":true})";
  EXPECT_EQ(profilesText(), "[" + first + "," + web + "]");

  expectCreated({"ÉTÉ", "--format", "avif", "--quality", "2"},
                "Profil « ÉTÉ » enregistré (avif, qualité 2).");
  expectCreated({"ete", "--format", "avif", "--quality", "3"},
                "Profil « ete » enregistré (avif, qualité 3).");
  EXPECT_EQ(profilesWithoutNewIDs(),
            R"([{"id":"6BA7B810-9DAD-11D1-80B4-00C04FD430C8","name":"ÉTÉ","format":"avif",)"
            R"("quality":2,"isDefault":false},)" +
                web +
                R"(,{"id":"<new>","name":"ete","format":"avif","quality":3,"isDefault":false}])");
}

TEST_F(ProfileCreationEndToEnd, leavesFoldersThatOnlyOtherProgramsKnow) {
  std::string others;
  for (const std::string url : {"smb:\\/\\/server\\/share\\/", "file:\\/\\/server\\/share\\/x",
                                "Exports", "file:\\/\\/\\/a%00b\\/"}) {
    others += R"({"id":"6BA7B810-9DAD-11D1-80B4-00C04FD430C8","name":"A","format":"png",)"
              R"("quality":1,"destinationFolder":")" +
              url + R"(","isDefault":false},)";
  }
  writeProfiles("[" + others.substr(0, others.size() - 1) + "]");
  expectCreated({"Web", "--format", "png", "--quality", "80"},
                "Profil « Web » enregistré (png, qualité 80).");
  EXPECT_EQ(profilesWithoutNewIDs(),
            "[" + others +
                R"({"id":"<new>","name":"Web","format":"png","quality":80,"isDefault":false}])");
}

TEST_F(ProfileCreationEndToEnd, replacesABrokenFile) {
  for (const std::string broken : {"", "{}", "[{\"name\":\"Web\"}]", "\xFF"}) {
    writeProfiles(broken);
    expectCreated({"A", "--format", "png", "--quality", "1e2"},
                  "Profil « A » enregistré (png, qualité 100).");
    EXPECT_EQ(profilesWithoutNewIDs(),
              R"([{"id":"<new>","name":"A","format":"png","quality":100,"isDefault":false}])");
  }
}

TEST_F(ProfileCreationEndToEnd, setsEveryBrokenFileAside) {
  const fs::path store = tool.profileFile().parent_path();
  writeProfiles("[{broken}]");
  fs::permissions(tool.profileFile(), fs::perms::owner_read | fs::perms::owner_write);
  for (const std::string broken : {"first", "second", "third"}) {
    test::writeFile(tool.profileFile(), broken);
    EXPECT_EQ(create({"A", "--format", "png", "--quality", "80"}).status, 0);
  }
  EXPECT_EQ(create({"B", "--format", "png", "--quality", "80"}).status, 0);
  Arguments names = storeNames();
  std::ranges::sort(names);
  EXPECT_EQ(names, (Arguments{"exportProfiles.json", "exportProfiles.json.bak",
                              "exportProfiles.json.bak2", "exportProfiles.json.bak3"}));
  EXPECT_EQ(test::readFile(store / "exportProfiles.json.bak").size(), 5u);
  EXPECT_EQ(test::readFile(store / "exportProfiles.json.bak2").size(), 6u);
  EXPECT_EQ(test::readFile(store / "exportProfiles.json.bak3").at(0), 't');
  EXPECT_EQ(fs::status(store / "exportProfiles.json.bak").permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(ProfileCreationEndToEnd, setsABrokenFileAsideUnderANameThatIsFree) {
  const fs::path store = tool.profileFile().parent_path();
  writeProfiles("broken");
  fs::create_directory(store / "exportProfiles.json.bak");
  fs::create_symlink("nowhere", store / "exportProfiles.json.bak2");
  EXPECT_EQ(create({"A", "--format", "png", "--quality", "80"}).status, 0);
  EXPECT_EQ(test::readFile(store / "exportProfiles.json.bak3").size(), 6u);
  EXPECT_TRUE(fs::is_symlink(store / "exportProfiles.json.bak2"));
}

TEST_F(ProfileCreationEndToEnd, readsWhatItWritesInPlaceOfAFileThatItMayNotRead) {
  if (geteuid() == 0) GTEST_SKIP() << "root may read everything";
  writeProfiles("[]");
  fs::permissions(tool.profileFile(), fs::perms::none);
  EXPECT_EQ(create({"A", "--format", "png", "--quality", "80"}).status, 0);
  EXPECT_NE(profilesText().find("\"A\""), std::string::npos);
  EXPECT_EQ(storeNames().size(), 2u);
}

TEST_F(ProfileCreationEndToEnd, replacesNoBrokenFileThatItCannotSetAside) {
  const fs::path store = tool.profileFile().parent_path();
  const fs::path longest = store / std::string(253, 'a');
  fs::create_directories(store);
  test::writeFile(longest, "broken");
  fs::create_symlink(longest.filename(), tool.profileFile());
  expectCreated({"A", "--format", "png", "--quality", "80"},
                "Profil « A » enregistré (png, qualité 80).");
  EXPECT_EQ(profilesText(), "broken");
  EXPECT_EQ(storeNames().size(), 2u);
}

TEST_F(ProfileCreationEndToEnd, leavesABrokenFileThatIsOnlyRead) {
  writeProfiles("broken");
  EXPECT_EQ(tool.run({"a.png", "--output", "out"}).status, 1);
  EXPECT_EQ(profilesText(), "broken");
  EXPECT_EQ(storeNames(), Arguments{"exportProfiles.json"});
}

TEST_F(ProfileCreationEndToEnd, showsItsUsageWithoutAName) {
  expectRefused({},
                "Usage : orvane-cli --create-profile <nom> [--format <format>] "
                "[--quality <1-100>] [--output <dossier>]");
}

TEST_F(ProfileCreationEndToEnd, refusesUnknownOperandsBeforeAnythingElse) {
  expectRefused({"", "--json"}, "Option inconnue pour --create-profile : --json");
  expectRefused({"Web", "a.png"}, "Option inconnue pour --create-profile : a.png");
  expectRefused({"Web", "--FORMAT", "png"}, "Option inconnue pour --create-profile : --FORMAT");
  expectRefused({"Web", "--help"}, "Option inconnue pour --create-profile : --help");
}

TEST_F(ProfileCreationEndToEnd, refusesABlankNameBeforeTheFormat) {
  expectRefused({""}, noName);
  expectRefused({" \t\u00a0\u3000\n"}, noName);
}

TEST_F(ProfileCreationEndToEnd, takesAnythingElseAsName) {
  expectCreated({"--format", "--format", "png", "--quality", "80"},
                "Profil « --format » enregistré (png, qualité 80).");
  expectCreated({"caf\xE9", "--format", "png", "--quality", "80"},
                "Profil « caf\uFFFD » enregistré (png, qualité 80).");
}

TEST_F(ProfileCreationEndToEnd, needsAFormat) {
  expectRefused({"Web"}, noFormat);
  expectRefused({"Web", "--quality", "80"}, noFormat);
  expectRefused({"Web", "--format", "jpg", "--quality", "80"}, noFormat);
  expectRefused({"Web", "--quality", "80", "--format", "png", "--format"}, noFormat);
}

TEST_F(ProfileCreationEndToEnd, needsAQuality) {
  expectRefused({"Web", "--format", "png"}, noQuality);
  expectRefused({"Web", "--format", "png", "--quality"}, noQuality);
  for (const std::string refused : {"0.5", "101", "8,5", " 80", "nan", ""}) {
    expectRefused({"Web", "--format", "png", "--quality", refused}, noQuality);
  }
  for (const std::string accepted : {"1", "100"}) {
    expectCreated({"Web", "--format", "png", "--quality", accepted},
                  "Profil « Web » enregistré (png, qualité " + accepted + ").");
  }
}

TEST_F(ProfileCreationEndToEnd, needsAFolderThatExists) {
  test::writeFile(tool.folder / "file", "");
  const std::string message = "--output doit être un dossier existant : ";
  for (const std::string refused : {"file", "missing", "", "file/"}) {
    expectRefused({"Web", "--format", "png", "--quality", "80", "--output", refused},
                  message + refused);
  }
}

TEST_F(ProfileCreationEndToEnd, followsALinkToAFolder) {
  fs::create_directory(tool.folder / "folder");
  fs::create_directory_symlink("folder", tool.folder / "link");
  expectCreated(
      {"Web", "--format", "png", "--quality", "80", "--output", "link"},
      "Profil « Web » enregistré (png, qualité 80, dossier " + tool.folder / "link" + ").");
}

TEST_F(ProfileCreationEndToEnd, checksTheVeryFolderThatItStores) {
  fs::create_directories(tool.folder / "elsewhere/folder");
  fs::create_directory(tool.folder / "elsewhere/beside");
  fs::create_directory_symlink("elsewhere/folder", tool.folder / "link");
  const Arguments start{"Web", "--format", "png", "--quality", "80", "--output"};
  const auto withOutput = [&](const std::string& output) {
    Arguments operands = start;
    operands.push_back(output);
    return operands;
  };
  expectRefused(withOutput("link/../beside"),
                "--output doit être un dossier existant : link/../beside");
  fs::create_directory(tool.folder / "here");
  expectCreated(withOutput("link/../here"), "Profil « Web » enregistré (png, qualité 80, dossier " +
                                                tool.folder / "here" + ").");
  const std::string absolute = tool.folder / "link/../beside";
  expectCreated(withOutput(absolute),
                "Profil « Web » enregistré (png, qualité 80, dossier " + absolute + ").");
}

TEST_F(ProfileCreationEndToEnd, savesWithoutAFolderWhereOutputEndsTheCommandLine) {
  expectCreated({"Web", "--format", "png", "--quality", "80", "--output", ".", "--output"},
                "Profil « Web » enregistré (png, qualité 80).");
  EXPECT_EQ(profilesWithoutNewIDs(),
            R"([{"id":"<new>","name":"Web","format":"png","quality":80,"isDefault":false}])");
}

TEST_F(ProfileCreationEndToEnd, confirmsEvenWhatCannotBeSaved) {
  const fs::path store = tool.profileFile().parent_path();
  fs::create_directories(store.parent_path());
  test::writeFile(store, "in the way");
  expectCreated({"Web", "--format", "png", "--quality", "80"},
                "Profil « Web » enregistré (png, qualité 80).");
  EXPECT_EQ(test::readFile(store).size(), 10u);
}

TEST_F(ProfileCreationEndToEnd, savesBelowTheHomeFolderByDefault) {
  const fs::path home = tool.environment["HOME"];
  tool.environment["XDG_DATA_HOME"] = "";
  expectCreated({"Web", "--format", "png", "--quality", "80"},
                "Profil « Web » enregistré (png, qualité 80).");
  EXPECT_TRUE(fs::exists(home / ".local" / "share" / "Orvane" / "exportProfiles.json"));
}

TEST_F(ProfileCreationEndToEnd, writesNumbersInTheCLocale) {
  const test::FrenchLocale locale("UTF-8");
  if (!locale.exists()) GTEST_SKIP() << "no French locale can be compiled here";
  tool.environment["LOCPATH"] = locale.locpath();
  tool.environment["LC_ALL"] = locale.name();
  expectCreated({"Web", "--format", "png", "--quality", "62.5"},
                "Profil « Web » enregistré (png, qualité 62).");
  EXPECT_NE(profilesText().find("\"quality\":62.5,"), std::string::npos);
}

TEST_F(ProfileCreationEndToEnd, saysWhyItsConfirmationCannotBeWritten) {
  const ToolRun run = tool.run({"--create-profile", "Web", "--format", "png", "--quality", "80"},
                               test::Output::full);
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.errors, "Erreur : " + std::string(std::strerror(ENOSPC)) + "\n");
  EXPECT_NE(profilesText().find("\"Web\""), std::string::npos);
}

TEST_F(ProfileCreationEndToEnd, saysNothingWhereStandardOutputIsClosed) {
  const ToolRun run = tool.run({"--create-profile", "Web", "--format", "png", "--quality", "80"},
                               test::Output::closed);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.errors, "");
  EXPECT_EQ(profilesWithoutNewIDs(),
            R"([{"id":"<new>","name":"Web","format":"png","quality":80,"isDefault":false}])");
}

}  // namespace
}  // namespace orvane
