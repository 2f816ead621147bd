#include "profiles/ExportProfileResolver.h"

#include "profiles/JSONFileStore.h"
#include "support/ProfileStoreTest.h"

namespace orvane {
namespace {

using ExportProfileResolver::Resolution;
using ExportProfileResolver::resolve;

struct ExportProfileResolverTest : test::ProfileStoreTest {
  const FileURL folderF = FileURL::fromPath("/F");
  const FileURL folderG = FileURL::fromPath("/G");

  static void store(const std::vector<ExportProfile>& profiles) {
    JSONFileStore::save(profiles, JSONFileStore::profilesFilename);
  }

  static ExportProfile profile(std::string name, ImageFormat format, double quality) {
    return {.id = UUID::random(), .name = std::move(name), .format = format, .quality = quality};
  }

  ExportProfile defaultProfile() const {
    ExportProfile result = profile("Défaut", ImageFormat::webp, 60);
    result.destinationFolderURL = folderF.folderURLString();
    result.isDefault = true;
    return result;
  }
};

TEST_F(ExportProfileResolverTest, hasDefaultsWithoutAnyProfile) {
  EXPECT_EQ(resolve({}, {}, {}, {}), (Resolution{ImageFormat::jpeg, 75, std::nullopt}));
  store({profile("Web", ImageFormat::webp, 60)});
  EXPECT_EQ(resolve({}, {}, {}, {}), (Resolution{ImageFormat::jpeg, 75, std::nullopt}));
  EXPECT_EQ(resolve({}, 12.5, ImageFormat::png, folderG),
            (Resolution{ImageFormat::png, 12.5, folderG}));
}

TEST_F(ExportProfileResolverTest, appliesTheProfileMarkedAsDefault) {
  store({profile("Web", ImageFormat::avif, 10), defaultProfile()});
  EXPECT_EQ(resolve({}, {}, {}, {}), (Resolution{ImageFormat::webp, 60, folderF}));
}

TEST_F(ExportProfileResolverTest, mergesEachSettingOnItsOwn) {
  store({defaultProfile()});
  EXPECT_EQ(resolve({}, 90, {}, {}), (Resolution{ImageFormat::webp, 90, folderF}));
  EXPECT_EQ(resolve({}, {}, ImageFormat::png, {}), (Resolution{ImageFormat::png, 60, folderF}));
  EXPECT_EQ(resolve({}, {}, {}, folderG), (Resolution{ImageFormat::webp, 60, folderG}));
}

TEST_F(ExportProfileResolverTest, takesTheFirstOfSeveralDefaults) {
  ExportProfile second = profile("Autre", ImageFormat::png, 1);
  second.isDefault = true;
  store({defaultProfile(), second});
  EXPECT_EQ(resolve({}, {}, {}, {}).format, ImageFormat::webp);
}

TEST_F(ExportProfileResolverTest, prefersTheNamedProfileToTheDefault) {
  store({defaultProfile(), profile("Web", ImageFormat::avif, 10)});
  EXPECT_EQ(resolve("Web", {}, {}, {}), (Resolution{ImageFormat::avif, 10, std::nullopt}));
}

TEST_F(ExportProfileResolverTest, findsNamesWithoutRegardToLetterCaseFirstInFileOrder) {
  store({profile("WEB", ImageFormat::avif, 10), profile("web", ImageFormat::png, 20),
         profile("Été", ImageFormat::heic, 30)});
  EXPECT_EQ(resolve("web", {}, {}, {}).quality, 10);
  EXPECT_EQ(resolve("ÉTÉ", {}, {}, {}).quality, 30);
}

TEST_F(ExportProfileResolverTest, throwsTheNameThatNoProfileHas) {
  store({defaultProfile(), profile("Web", ImageFormat::avif, 10)});
  for (const std::string name : {"Nope", " Web", "Web ", "Wéb", ""}) {
    try {
      resolve(name, 80, ImageFormat::png, folderG);
      ADD_FAILURE() << name;
    } catch (const ProfileNotFoundError& error) {
      EXPECT_EQ(error.name(), name);
      EXPECT_EQ(error.localizedDescription(), "Profil introuvable : " + name);
    }
  }
}

TEST_F(ExportProfileResolverTest, readsAMalformedFileAsNone) {
  writeProfiles("[");
  EXPECT_EQ(resolve({}, {}, {}, {}), Resolution());
  EXPECT_THROW(resolve("Web", {}, {}, {}), ProfileNotFoundError);
}

}  // namespace
}  // namespace orvane
