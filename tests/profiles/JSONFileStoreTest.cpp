#include "profiles/JSONFileStore.h"

#include <unistd.h>

#include <limits>

#include "profiles/ExportProfileJSON.h"
#include "support/ProfileStoreTest.h"
#include "support/TemporaryFolder.h"

namespace orvane {
namespace {

using test::readFile;
using test::writeFile;
namespace fs = std::filesystem;

using JSONFileStoreTest = test::ProfileStoreTest;

std::vector<ExportProfile> twoProfiles() {
  return {{.id = UUID::random(), .name = "Web", .format = ImageFormat::webp, .quality = 80},
          {.id = UUID::random(),
           .name = "Archive",
           .format = ImageFormat::jxl,
           .quality = 90.5,
           .destinationFolderURL = FileURL::fromPath("/archive").folderURLString(),
           .isDefault = true}};
}

void save(const std::vector<ExportProfile>& profiles) {
  JSONFileStore::save(profiles, JSONFileStore::profilesFilename);
}

TEST_F(JSONFileStoreTest, liesInAFolderOfItsOwn) {
  EXPECT_EQ(folder().filename(), "Orvane");
  EXPECT_EQ(&JSONFileStore::folder(), &JSONFileStore::folder());
}

TEST_F(JSONFileStoreTest, isEmptyWithoutAFolderAndAFile) {
  EXPECT_EQ(JSONFileStore::loadProfiles(), std::vector<ExportProfile>());
  EXPECT_FALSE(fs::exists(folder()));
}

TEST_F(JSONFileStoreTest, createsTheFolderAndTheFile) {
  const auto profiles = twoProfiles();
  save(profiles);
  EXPECT_EQ(JSONFileStore::loadProfiles(), profiles);
  EXPECT_EQ(profilesText(), ExportProfileJSON::encode(profiles));
}

TEST_F(JSONFileStoreTest, replacesTheFileWholeAndReadsItAfresh) {
  save(twoProfiles());
  save({});
  EXPECT_EQ(profilesText(), "[]");
  EXPECT_EQ(JSONFileStore::loadProfiles(), std::vector<ExportProfile>());
  writeProfiles(*ExportProfileJSON::encode(twoProfiles()));
  EXPECT_EQ(JSONFileStore::loadProfiles().size(), 2u);
}

TEST_F(JSONFileStoreTest, isEmptyWhereTheFileIsMalformed) {
  writeProfiles("[{]");
  EXPECT_EQ(JSONFileStore::loadProfiles(), std::vector<ExportProfile>());
}

TEST_F(JSONFileStoreTest, isEmptyWhereTheFileIsAFolder) {
  fs::create_directories(file());
  EXPECT_EQ(JSONFileStore::loadProfiles(), std::vector<ExportProfile>());
  save(twoProfiles());
  EXPECT_TRUE(fs::is_directory(file()));
}

TEST_F(JSONFileStoreTest, savesNothingInSilenceWhereTheFolderIsAFile) {
  writeFile(folder(), "in the way");
  save(twoProfiles());
  EXPECT_EQ(JSONFileStore::loadProfiles(), std::vector<ExportProfile>());
  EXPECT_EQ(readFile(folder()).size(), 10u);
}

TEST_F(JSONFileStoreTest, leavesTheFileAloneInAReadOnlyFolder) {
  if (geteuid() == 0) GTEST_SKIP() << "nothing is read-only to root";
  const auto profiles = twoProfiles();
  save(profiles);
  fs::permissions(folder(), fs::perms::owner_read | fs::perms::owner_exec);
  save({});
  fs::permissions(folder(), fs::perms::owner_all);
  EXPECT_EQ(JSONFileStore::loadProfiles(), profiles);
}

TEST_F(JSONFileStoreTest, leavesTheFileAloneWhenAListCannotBeEncoded) {
  auto profiles = twoProfiles();
  save(profiles);
  const std::string before = profilesText();
  profiles[0].quality = std::numeric_limits<double>::infinity();
  save(profiles);
  EXPECT_EQ(profilesText(), before);
}

TEST_F(JSONFileStoreTest, keepsTheModeOfTheFileAndLeavesNothingElse) {
  save(twoProfiles());
  fs::permissions(file(), fs::perms::owner_read | fs::perms::owner_write);
  save({});
  EXPECT_EQ(fs::status(file()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  const auto entries = fs::directory_iterator(folder());
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 1);
}

}  // namespace
}  // namespace orvane
