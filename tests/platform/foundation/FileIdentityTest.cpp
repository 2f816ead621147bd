#include "platform/foundation/FileIdentity.h"

#include <gtest/gtest.h>

#include "support/TemporaryFolder.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

struct FileIdentityTest : testing::Test {
  test::TemporaryFolder folder;

  FileIdentityTest() { test::writeFile(folder / "a", ""); }

  std::optional<FileIdentity> of(std::string_view name) const {
    return FileIdentity::of(folder / name);
  }
};

TEST_F(FileIdentityTest, isThatOfOneFileHoweverItIsSpelt) {
  fs::create_directory(folder / "sub");
  fs::create_symlink("a", folder / "symbolic");
  fs::create_hard_link(folder / "a", folder / "hard");
  ASSERT_TRUE(of("a").has_value());
  for (const char* name : {"./a", "sub/../a", "symbolic", "hard"}) EXPECT_EQ(of(name), of("a"));
}

TEST_F(FileIdentityTest, tellsFilesApart) {
  test::writeFile(folder / "b", "");
  EXPECT_NE(of("a"), of("b"));
  EXPECT_NE(of("a"), of("."));
  EXPECT_NE(of("none"), of("."));
  EXPECT_NE(of("none"), of("other"));
}

TEST_F(FileIdentityTest, knowsAMissingFileByItsFolderAndName) {
  fs::create_directory_symlink(".", folder / "same");
  fs::create_symlink("none", folder / "broken");
  fs::create_symlink("same/broken", folder / "twice");
  ASSERT_TRUE(of("none").has_value());
  for (const char* name : {"NONE", "same/none", "broken", "twice"}) EXPECT_EQ(of(name), of("none"));
}

TEST_F(FileIdentityTest, isNothingWithoutAFolder) { EXPECT_EQ(of("none/a"), std::nullopt); }

TEST_F(FileIdentityTest, comesToAnEndWhereLinksGoInCircles) {
  fs::create_symlink("left", folder / "right");
  fs::create_symlink("right", folder / "left");
  EXPECT_NE(of("left"), of("a"));
}

}  // namespace
}  // namespace orvane
