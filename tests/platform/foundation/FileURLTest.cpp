#include "platform/foundation/FileURL.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/TemporaryFolder.h"

namespace orvane {
namespace {

using test::TemporaryFolder;

/// Makes a new temporary folder the current one, and puts the former one back.
class CurrentFolder {
 public:
  CurrentFolder() { std::filesystem::current_path(folder_.path()); }
  ~CurrentFolder() { std::filesystem::current_path(former_); }
  CurrentFolder(const CurrentFolder&) = delete;
  CurrentFolder& operator=(const CurrentFolder&) = delete;

  std::string path() const { return std::filesystem::canonical(folder_.path()); }

 private:
  std::filesystem::path former_ = std::filesystem::current_path();
  TemporaryFolder folder_;
};

TEST(FileURL, resolvesARelativePathAgainstTheCurrentFolder) {
  const CurrentFolder current;
  EXPECT_EQ(FileURL::fromPath("a").path(), current.path() + "/a");
  EXPECT_EQ(FileURL::fromPath("./a/../b").path(), current.path() + "/b");
  EXPECT_EQ(FileURL::fromPath("a//b/./c/").path(), current.path() + "/a/b/c");
  EXPECT_EQ(FileURL::fromPath("..").path(),
            std::filesystem::path(current.path()).parent_path().string());
  EXPECT_EQ(FileURL::fromPath("../../../../../../../../../../..").path(), "/");
}

TEST(FileURL, takesTheEmptyPathForTheCurrentFolder) {
  const CurrentFolder current;
  EXPECT_EQ(FileURL::fromPath("").path(), current.path());
  EXPECT_EQ(FileURL::fromPath(".").path(), current.path());
}

TEST(FileURL, keepsARelativePathWhereTheCurrentFolderIsGone) {
  const CurrentFolder current;
  std::filesystem::remove(current.path());
  EXPECT_EQ(FileURL::fromPath("a/b").path(), "a/b");
  for (const char* path : {"", ".", "./", "a/.."}) {
    EXPECT_EQ(FileURL::fromPath(path).appending("b").path(), "./b") << path;
  }
}

TEST(FileURL, keepsAnAbsolutePathAsTyped) {
  EXPECT_EQ(FileURL::fromPath("/x//y/../z").path(), "/x//y/../z");
  EXPECT_EQ(FileURL::fromPath("/x/./y").path(), "/x/./y");
  EXPECT_EQ(FileURL::fromPath("/caf\xE9").path(), "/caf\xE9");
}

TEST(FileURL, hasNoTrailingSlash) {
  EXPECT_EQ(FileURL::fromPath("/x/y/").path(), "/x/y");
  EXPECT_EQ(FileURL::fromPath("/x/y//").path(), "/x/y");
  EXPECT_EQ(FileURL::fromPath("/").path(), "/");
  EXPECT_EQ(FileURL::fromPath("//").path(), "/");
}

TEST(FileURL, endsWithItsLastPathComponent) {
  EXPECT_EQ(FileURL::fromPath("/x/y.png").lastPathComponent(), "y.png");
  EXPECT_EQ(FileURL::fromPath("/x/y/").lastPathComponent(), "y");
  EXPECT_EQ(FileURL::fromPath("/").lastPathComponent(), "");
}

TEST(FileURL, takesTheLastExtensionOffABaseName) {
  const auto baseName = [](const char* name) {
    return std::string(FileURL::fromPath(std::string("/a.b/") + name).baseName());
  };
  EXPECT_EQ(baseName("IMG_01.final.PNG"), "IMG_01.final");
  EXPECT_EQ(baseName("a.tar.gz"), "a.tar");
  EXPECT_EQ(baseName("noext"), "noext");
  EXPECT_EQ(baseName(".hidden"), ".hidden");
  EXPECT_EQ(baseName(".hidden.png"), ".hidden");
  EXPECT_EQ(baseName("photo."), "photo.");
  EXPECT_EQ(baseName("a..b"), "a.");
  EXPECT_EQ(baseName(".."), "..");
}

TEST(FileURL, appendsAComponent) {
  EXPECT_EQ(FileURL::fromPath("/x").appending("y.png").path(), "/x/y.png");
  EXPECT_EQ(FileURL::fromPath("/").appending("y").path(), "/y");
  EXPECT_EQ(FileURL::fromPath("/x").appending("y/").path(), "/x/y");
}

TEST(FileURL, isWrittenPercentEncoded) {
  const auto written = [](const char* path) { return FileURL::fromPath(path).folderURLString(); };
  EXPECT_EQ(written("/Users/me/Exports"), "file:///Users/me/Exports/");
  EXPECT_EQ(written("/a b"), "file:///a%20b/");
  EXPECT_EQ(written("/é"), "file:///%C3%A9/");
  EXPECT_EQ(written("/100%"), "file:///100%25/");
  EXPECT_EQ(written("/#1?"), "file:///%231%3F/");
  EXPECT_EQ(written("/\xFF"), "file:///%FF/");
  EXPECT_EQ(written("/A-z_0.9~!$&'()*+,;=:@"), "file:///A-z_0.9~!$&'()*+,;=:@/");
  EXPECT_EQ(written("/[]\"\\^`{|}<>"), "file:///%5B%5D%22%5C%5E%60%7B%7C%7D%3C%3E/");
  EXPECT_EQ(written("/"), "file:///");
}

TEST(FileURL, readsBackWhatItWrites) {
  for (const char* path : {"/", "/a b", "/é/画像", "/100%25", "/#1?", "/\xFF", "/x//y/../z"}) {
    const FileURL url = FileURL::fromPath(path);
    EXPECT_EQ(FileURL::fromURLString(url.folderURLString()), url) << path;
  }
}

TEST(FileURL, readsEveryFormOfFileURL) {
  const auto path = [](const char* text) {
    const auto url = FileURL::fromURLString(text);
    return url ? url->path() : "none";
  };
  EXPECT_EQ(path("file:///a%20b/"), "/a b");
  EXPECT_EQ(path("file:///a/b"), "/a/b");
  EXPECT_EQ(path("file:/x"), "/x");
  EXPECT_EQ(path("file://localhost/x"), "/x");
  EXPECT_EQ(path("file://LocalHost/x"), "/x");
  EXPECT_EQ(path("FILE:///x"), "/x");
  EXPECT_EQ(path("file:///%c3%A9"), "/é");
  EXPECT_EQ(path("file:///x?query#fragment"), "/x");
  EXPECT_EQ(path("file:///"), "/");
}

TEST(FileURL, readsNothingElse) {
  for (const char* text :
       {"", "file", "file:", "file://", "file://localhost", "file:x", "file://server/x",
        "file://localhost.example/x", "http://x", "http:///x", "/x", "x", " file:///x"}) {
    EXPECT_FALSE(FileURL::fromURLString(text).has_value()) << text;
  }
}

TEST(FileURL, readsNoURLThatBreaksTheGrammar) {
  for (const char* text : {"file:///%", "file:///%2", "file:///a b", "file:///é", "file:///a\tb",
                           "file:///a\\b", "file:///[x]", "file:///%00"}) {
    EXPECT_FALSE(FileURL::fromURLString(text).has_value()) << text;
  }
}

}  // namespace
}  // namespace orvane
