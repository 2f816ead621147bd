#include "profiles/JSONText.h"

#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

namespace orvane {
namespace {

TEST(JSONText, escapesQuotesBackslashesAndSlashes) {
  EXPECT_EQ(JSONText::string(R"(a/b "c" \d)"), R"("a\/b \"c\" \\d")");
}

TEST(JSONText, hasShortEscapesForFiveControlCharactersAndNumbersForTheRest) {
  EXPECT_EQ(JSONText::string("\b\f\n\r\t"), R"("\b\f\n\r\t")");
  EXPECT_EQ(JSONText::string(std::string_view("\0\x01\x0b\x1f\x7f", 5)),
            "\"\\u0000\\u0001\\u000b\\u001f\x7f\"");
}

TEST(JSONText, leavesOtherCharactersInUTF8) {
  EXPECT_EQ(JSONText::string("été → 图 😀\u2028"), "\"été → 图 😀\u2028\"");
}

TEST(JSONText, showsEveryIllFormedSequenceAsOneReplacementCharacter) {
  EXPECT_EQ(JSONText::string("caf\xE9.png"), "\"caf\uFFFD.png\"");
  EXPECT_EQ(JSONText::string("\xF0\x9F\x98/\xFF\xFE"), "\"\uFFFD\\/\uFFFD\uFFFD\"");
}

TEST(JSONText, writesNumbersWithTheFewestDigits) {
  EXPECT_EQ(JSONText::number(0), "0");
  EXPECT_EQ(JSONText::number(1), "1");
  EXPECT_EQ(JSONText::number(-2), "-2");
  EXPECT_EQ(JSONText::number(100000), "100000");
  EXPECT_EQ(JSONText::number(62.5), "62.5");
  EXPECT_EQ(JSONText::number(0.1), "0.1");
  EXPECT_EQ(JSONText::number(1 - 2.0 / 3), "0.33333333333333337");
  EXPECT_EQ(JSONText::number(0.00001), "1e-05");
  EXPECT_EQ(JSONText::number(1e300), "1e+300");
}

TEST(JSONText, isReadBackAsItWas) {
  std::string everyByte;
  for (int byte = 0; byte < 128; ++byte) everyByte += static_cast<char>(byte);
  EXPECT_EQ(nlohmann::json::parse(JSONText::string(everyByte)), everyByte);
  for (const double value : {-0.1, 1e-7, 123456.789, std::numeric_limits<double>::min(),
                             std::numeric_limits<double>::max()}) {
    EXPECT_EQ(nlohmann::json::parse(JSONText::number(value)).get<double>(), value);
  }
}

}  // namespace
}  // namespace orvane
