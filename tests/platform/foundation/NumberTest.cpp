#include "platform/foundation/Number.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace orvane {
namespace {

using namespace std::string_view_literals;

TEST(Number, readsWholeTextsAsDoubles) {
  EXPECT_EQ(Number::parseDouble("75"), 75);
  EXPECT_EQ(Number::parseDouble("72.5"), 72.5);
  EXPECT_EQ(Number::parseDouble("+5"), 5);
  EXPECT_EQ(Number::parseDouble("-0.25e1"), -2.5);
  EXPECT_EQ(Number::parseDouble(".5"), 0.5);
  EXPECT_EQ(Number::parseDouble("5."), 5);
  EXPECT_EQ(Number::parseDouble("1E2"), 100);
}

TEST(Number, readsTheRarerFormsOfTheCLocale) {
  EXPECT_EQ(Number::parseDouble("0x1p3"), 8);
  EXPECT_EQ(Number::parseDouble("0X1.8"), 1.5);
  EXPECT_EQ(Number::parseDouble("inf"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(Number::parseDouble("-Infinity"), -std::numeric_limits<double>::infinity());
  EXPECT_EQ(Number::parseDouble("1e999"), std::numeric_limits<double>::infinity());
  const auto nan = Number::parseDouble("nan");
  ASSERT_TRUE(nan.has_value());
  EXPECT_TRUE(std::isnan(*nan));
}

TEST(Number, takesNoTextThatIsNotANumberFromEndToEnd) {
  for (const auto text : {""sv,    " 80"sv, "\t80"sv,  "\n80"sv, "\v80"sv,   "\f80"sv, "\r80"sv,
                          "80 "sv, "80%"sv, "8,5"sv,   "abc"sv,  "+"sv,      "1e"sv,   "0x"sv,
                          "--5"sv, "\0"sv,  "\0005"sv, "5\0"sv,  "5\0006"sv, "é"sv}) {
    EXPECT_FALSE(Number::parseDouble(text).has_value()) << text;
  }
}

TEST(Number, readsIntegers) {
  EXPECT_EQ(Number::parseInteger("4"), 4);
  EXPECT_EQ(Number::parseInteger("+3"), 3);
  EXPECT_EQ(Number::parseInteger("-2"), -2);
  EXPECT_EQ(Number::parseInteger("007"), 7);
  EXPECT_EQ(Number::parseInteger("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(Number::parseInteger("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
}

TEST(Number, takesNoTextThatIsNotAnInteger) {
  for (const auto text :
       {""sv, "+"sv, "-"sv, "+-5"sv, "-+5"sv, "++5"sv, "1.5"sv, "x"sv, " 4"sv, "4 "sv, "0x10"sv,
        "1e3"sv, "4\0"sv, "٤"sv, "9223372036854775808"sv, "-9223372036854775809"sv}) {
    EXPECT_FALSE(Number::parseInteger(text).has_value()) << text;
  }
}

TEST(Number, isDescribedWithItsFewestDigitsAndAFraction) {
  EXPECT_EQ(Number::description(150), "150.0");
  EXPECT_EQ(Number::description(0.5), "0.5");
  EXPECT_EQ(Number::description(100.5), "100.5");
  EXPECT_EQ(Number::description(100000), "100000.0");
  EXPECT_EQ(Number::description(0.1 + 0.2), "0.30000000000000004");
  EXPECT_EQ(Number::description(-3), "-3.0");
  EXPECT_EQ(Number::description(0), "0.0");
  EXPECT_EQ(Number::description(-0.0), "-0.0");
}

TEST(Number, isDescribedWithAnExponentWhereItIsVeryLargeOrVerySmall) {
  EXPECT_EQ(Number::description(1e15), "1000000000000000.0");
  EXPECT_EQ(Number::description(9007199254740993), "9007199254740992.0");
  EXPECT_EQ(Number::description(1e16), "1e+16");
  EXPECT_EQ(Number::description(-1.25e300), "-1.25e+300");
  EXPECT_EQ(Number::description(0.0001), "0.0001");
  EXPECT_EQ(Number::description(0.00001), "1e-05");
  EXPECT_EQ(Number::description(5e-324), "5e-324");
}

TEST(Number, isDescribedInWordsWhereItIsNotFinite) {
  EXPECT_EQ(Number::description(std::numeric_limits<double>::quiet_NaN()), "nan");
  EXPECT_EQ(Number::description(-std::numeric_limits<double>::quiet_NaN()), "nan");
  EXPECT_EQ(Number::description(std::numeric_limits<double>::infinity()), "inf");
  EXPECT_EQ(Number::description(-std::numeric_limits<double>::infinity()), "-inf");
}

}  // namespace
}  // namespace orvane
