#include "profiles/ExportProfileJSON.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <limits>
#include <stdexcept>

namespace orvane {
namespace {

const std::string idText = "6BA7B810-9DAD-11D1-80B4-00C04FD430C8";

ExportProfile web() {
  return {.id = UUID::fromString(idText).value(),
          .name = "Web",
          .format = ImageFormat::webp,
          .quality = 80};
}

std::optional<std::vector<ExportProfile>> decode(std::string_view json) {
  return ExportProfileJSON::decode(
      {reinterpret_cast<const std::uint8_t*>(json.data()), json.size()});
}

/// The one profile of an array. Throws std::runtime_error when there is none or another number.
ExportProfile decodeOne(const std::string& json) {
  const auto profiles = decode("[" + json + "]");
  if (!profiles || profiles->size() != 1) throw std::runtime_error("not one profile: " + json);
  return profiles->front();
}

/// A whole element with one member more.
std::string elementWith(const std::string& member) {
  return R"({"id":")" + idText + R"(","name":"Web","format":"webp","quality":80,)" + member + "}";
}

TEST(ExportProfileJSON, isWrittenOnOneLineInTheOrderOfItsKeys) {
  ExportProfile profile = web();
  EXPECT_EQ(ExportProfileJSON::encode(std::vector{profile}),
            R"([{"id":"6BA7B810-9DAD-11D1-80B4-00C04FD430C8","name":"Web","format":"webp",)"
            R"("quality":80,"isDefault":false}])");
  profile.name = "Été \"1/2\"";
  profile.format = ImageFormat::jpeg;
  profile.quality = 62.5;
  profile.destinationFolderURL = FileURL::fromPath("/Users/me/Exports d'été").folderURLString();
  profile.isDefault = true;
  EXPECT_EQ(ExportProfileJSON::encode(std::vector{profile, web()}),
            R"([{"id":"6BA7B810-9DAD-11D1-80B4-00C04FD430C8","name":"Été \"1\/2\"",)"
            R"("format":"jpeg","quality":62.5,)"
            R"("destinationFolder":"file:\/\/\/Users\/me\/Exports%20d'%C3%A9t%C3%A9\/",)"
            R"("isDefault":true},)"
            R"({"id":"6BA7B810-9DAD-11D1-80B4-00C04FD430C8","name":"Web","format":"webp",)"
            R"("quality":80,"isDefault":false}])");
  EXPECT_EQ(ExportProfileJSON::encode({}), "[]");
}

TEST(ExportProfileJSON, isNotWrittenWithAQualityThatJSONCannotSay) {
  ExportProfile profile = web();
  profile.quality = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(ExportProfileJSON::encode(std::vector{web(), profile}), std::nullopt);
}

TEST(ExportProfileJSON, isReadBackAsItWasWritten) {
  std::vector<ExportProfile> profiles;
  for (const ImageFormat::Case format : ImageFormat::allCases) {
    profiles.push_back({.id = UUID::random(),
                        .name = "n/\"\\\n\u0001é",
                        .format = format,
                        .quality = 33.3,
                        .destinationFolderURL = FileURL::fromPath("/a b/%/\xFF").folderURLString(),
                        .isDefault = format == ImageFormat::avif});
  }
  profiles.push_back(web());
  EXPECT_EQ(decode(*ExportProfileJSON::encode(profiles)), profiles);
}

TEST(ExportProfileJSON, isReadInAnyOrderAndLayoutWithUnknownKeys) {
  ExportProfile expected = web();
  expected.destinationFolderURL = FileURL::fromPath("/Users/me").folderURLString();
  expected.isDefault = true;
  EXPECT_EQ(decodeOne("\n{\t\"isDefault\" : true , \"colour\": [{\"a\": null}],\r\n"
                      "\"destinationFolder\":\"file:///Users/me/\", \"quality\" : 8.0e1,"
                      "\"format\":\"webp\", \"n\\u0061me\":\"\\u0057eb\","
                      "\"id\":\"6ba7b810-9dad-11d1-80b4-00c04fd430c8\"}"),
            expected);
}

TEST(ExportProfileJSON, isReadFromAFileWithAByteOrderMark) {
  EXPECT_EQ(decode("\xEF\xBB\xBF[]"), std::vector<ExportProfile>());
}

TEST(ExportProfileJSON, hasDefaultsForWhatIsAbsentOrNull) {
  EXPECT_EQ(decodeOne(elementWith(R"("x":0)")), web());
  EXPECT_EQ(decodeOne(elementWith(R"("destinationFolder":null,"isDefault":null)")), web());
}

TEST(ExportProfileJSON, takesAnyNumberAsQuality) {
  EXPECT_EQ(decodeOne(elementWith(R"("quality":80.0)")).quality, 80);
  EXPECT_EQ(decodeOne(elementWith(R"("quality":62.5)")).quality, 62.5);
  EXPECT_EQ(decodeOne(elementWith(R"("quality":-3)")).quality, -3);
  EXPECT_EQ(decodeOne(elementWith(R"("quality":123456789012345678901234567890)")).quality,
            123456789012345678901234567890.0);
}

TEST(ExportProfileJSON, takesTheLastOfTwoEqualKeys) {
  EXPECT_EQ(decodeOne(elementWith(R"("name":"Last")")).name, "Last");
}

TEST(ExportProfileJSON, keepsTheURLOfItsFolderAsItWasRead) {
  for (const std::string url :
       {"smb://server/share/", "file://server/share/x", "Exports", "file:///a%00b/", "file:///x",
        "FILE://localhost/%7Eme/", "http://[::1]:8080/x"}) {
    ExportProfile profile = web();
    profile.destinationFolderURL = url;
    EXPECT_EQ(decode(*ExportProfileJSON::encode(std::vector{profile})), std::vector{profile})
        << url;
  }
}

TEST(ExportProfileJSON, discardsTheWholeListForOneBadElement) {
  const std::string good = elementWith(R"("x":0)");
  const std::vector<std::string> badElements{
      elementWith(R"("format":"gif")"),
      elementWith(R"("format":"JPEG")"),
      elementWith(R"("format":"jpg")"),
      elementWith(R"("format":3)"),
      elementWith(R"("format":null)"),
      elementWith(R"("id":"6BA7B810")"),
      elementWith(R"("id":1)"),
      elementWith(R"("id":null)"),
      elementWith(R"("name":["Web"])"),
      elementWith(R"("name":null)"),
      elementWith(R"("quality":"80")"),
      elementWith(R"("quality":true)"),
      elementWith(R"("quality":null)"),
      elementWith(R"("quality":1e400)"),
      elementWith(R"("destinationFolder":"")"),
      elementWith(R"("destinationFolder":"not a URL")"),
      elementWith(R"("destinationFolder":"http://[bad")"),
      elementWith(R"("destinationFolder":"http://a/%zz")"),
      elementWith(R"("destinationFolder":"file:///a b/")"),
      elementWith(R"("destinationFolder":"file:///a\tb/")"),
      elementWith(R"("destinationFolder":"file:///été/")"),
      elementWith(R"("destinationFolder":"file:///a%2")"),
      elementWith(R"("destinationFolder":["file:///a/"])"),
      elementWith(R"("isDefault":1)"),
      elementWith(R"("isDefault":"true")"),
      "null",
      "[]",
      "\"Web\"",
      "{}",
  };
  EXPECT_EQ(decode("[" + good + "," + good + "]")->size(), 2u);
  for (const std::string& bad : badElements) {
    EXPECT_EQ(decode("[" + good + "," + good + "," + bad + "]"), std::nullopt) << bad;
  }
}

TEST(ExportProfileJSON, needsFourOfItsKeys) {
  for (const std::string key : {"id", "name", "format", "quality"}) {
    std::string element = elementWith(R"("x":0)");
    element.replace(element.find("\"" + key + "\""), key.size() + 2, "\"y\"");
    EXPECT_EQ(decode("[" + element + "]"), std::nullopt) << key;
  }
}

TEST(ExportProfileJSON, isNotReadFromAnythingButAWholeArray) {
  const std::string element = elementWith(R"("x":0)");
  for (const std::string& text :
       {std::string(), std::string("[") + element, "[" + element + "]]", "[" + element + ",]",
        element, std::string("null"), std::string("[NaN]"), "[" + element + "] // all",
        "[" + element + "]" + '\0', "[" + element + "]" + '\0' + "[]", std::string("[\"\xFF\"]"),
        std::string("[\"\\ud800\"]")}) {
    EXPECT_EQ(decode(text), std::nullopt) << text;
  }
}

TEST(ExportProfileJSON, isRefusedWithoutACrashHoweverDeepTheNesting) {
  const std::string open(1'000'000, '[');
  const std::string close(1'000'000, ']');
  EXPECT_EQ(decode(open), std::nullopt);
  EXPECT_EQ(decode(open + close), std::nullopt);
  std::string objects;
  for (int i = 0; i < 100'000; ++i) objects += "{\"a\":";
  EXPECT_EQ(decode("[" + objects), std::nullopt);
}

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

TEST(ExportProfileJSONDeathTest, isRefusedWithoutACrashWhereMemoryIsShort) {
  std::string text = "[0";
  for (int i = 0; i < 4'000'000; ++i) text += ",0";
  text += "]";
  const auto decodeWithin = [&](rlim_t megabytes) {
    const rlimit limit{megabytes << 20, RLIM_INFINITY};
    setrlimit(RLIMIT_DATA, &limit);
    _exit(decode(text) == std::nullopt ? 0 : 1);
  };
  for (rlim_t megabytes = 40; megabytes < 100; megabytes += 5) {
    EXPECT_EXIT(decodeWithin(megabytes), testing::ExitedWithCode(0), "") << megabytes;
  }
}

#endif

}  // namespace
}  // namespace orvane
