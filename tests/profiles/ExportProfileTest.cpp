#include "profiles/ExportProfile.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

ExportProfile web() {
  return {.id = UUID::random(), .name = "Web", .format = ImageFormat::webp, .quality = 80};
}

std::optional<FileURL> folderOf(const std::string& url) {
  ExportProfile profile = web();
  profile.destinationFolderURL = url;
  return profile.destinationFolder();
}

TEST(ExportProfile, hasTheFolderOfAFileURL) {
  EXPECT_EQ(folderOf("file:///a%20b"), FileURL::fromPath("/a b"));
  EXPECT_EQ(folderOf("file://localhost/a/"), FileURL::fromPath("/a"));
  EXPECT_EQ(folderOf("file:///"), FileURL::fromPath("/"));
}

TEST(ExportProfile, hasNoFolderWithoutAURL) { EXPECT_EQ(web().destinationFolder(), std::nullopt); }

TEST(ExportProfile, hasNoFolderWhereTheURLIsNotAFileOfThisMachine) {
  for (const char* url : {"smb://server/share/", "https://example.com/a?b=c%20#d",
                          "file://server/share/x", "Exports", "/Users/me", "file:///a%00b/"}) {
    EXPECT_EQ(folderOf(url), std::nullopt) << url;
  }
}

TEST(ExportProfile, isNamedWithoutRegardToLetterCase) {
  ExportProfile profile = web();
  EXPECT_TRUE(profile.isNamed("web"));
  EXPECT_TRUE(profile.isNamed("WEB"));
  EXPECT_FALSE(profile.isNamed(" Web"));
  EXPECT_FALSE(profile.isNamed("Web "));
  EXPECT_FALSE(profile.isNamed("Wéb"));
  profile.name = "Été";
  EXPECT_TRUE(profile.isNamed("ÉTÉ"));
  EXPECT_TRUE(profile.isNamed("E\u0301te\u0301"));
  EXPECT_FALSE(profile.isNamed("ete"));
}

}  // namespace
}  // namespace orvane
