#include "platform/foundation/ByteCountFormatter.h"

#include <gtest/gtest.h>
#include <unicode/locid.h>

#include <clocale>
#include <cstdlib>
#include <iostream>
#include <limits>

namespace orvane {
namespace {

/// ICU's default locale, put back at the end.
class ByteCountFormatterTest : public testing::Test {
 protected:
  static std::string text(const char* locale, std::int64_t bytes) {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(icu::Locale(locale), status);
    return ByteCountFormatter().string(bytes);
  }

  ~ByteCountFormatterTest() override {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(former_, status);
  }

 private:
  icu::Locale former_ = icu::Locale::getDefault();
};

TEST_F(ByteCountFormatterTest, speaksFrench) {
  EXPECT_EQ(text("fr_FR", 0), "Zéro Ko");
  EXPECT_EQ(text("fr_FR", 1), "1 octet");
  EXPECT_EQ(text("fr_FR", 2), "2 octets");
  EXPECT_EQ(text("fr_FR", 999), "999 octets");
  EXPECT_EQ(text("fr_FR", 1000), "1 Ko");
  EXPECT_EQ(text("fr_FR", 1'234'567), "1,2 Mo");
  EXPECT_EQ(text("fr_CA", 1'234'567), "1,2 Mo");
}

TEST_F(ByteCountFormatterTest, speaksEnglish) {
  EXPECT_EQ(text("en_US", 0), "Zero KB");
  EXPECT_EQ(text("en_US", 1), "1 byte");
  EXPECT_EQ(text("en_US", 999), "999 bytes");
  EXPECT_EQ(text("en_US", 1000), "1 KB");
  EXPECT_EQ(text("en_GB", 1'234'567), "1.2 MB");
}

TEST_F(ByteCountFormatterTest, speaksOtherLanguagesAsICUDoes) {
  EXPECT_EQ(text("de_DE", 0), "Null kB");
  EXPECT_EQ(text("de_DE", 1), "1\u00A0Byte");
  EXPECT_EQ(text("de_DE", 1'234'567), "1,2 MB");
  EXPECT_EQ(text("es_ES", 0), "Cero kB");
  EXPECT_EQ(text("fi_FI", 25'000), "25 kt");
}

TEST_F(ByteCountFormatterTest, speaksFrenchWhereNoLanguageIsSet) {
  EXPECT_EQ(text("en_US_POSIX", 1'234'567), "1,2 Mo");
  EXPECT_EQ(text("", 1'234'567), "1,2 Mo");
}

TEST_F(ByteCountFormatterTest, choosesTheUnitAfterRounding) {
  EXPECT_EQ(text("fr", 999'499), "999 Ko");
  EXPECT_EQ(text("fr", 999'500), "1 Mo");
  EXPECT_EQ(text("fr", 999'949), "1 Mo");
  EXPECT_EQ(text("fr", 999'950), "1 Mo");
  EXPECT_EQ(text("fr", 999'949'999), "999,9 Mo");
  EXPECT_EQ(text("fr", 999'950'000), "1 Go");
  EXPECT_EQ(text("fr", 999'994'999'999), "999,99 Go");
  EXPECT_EQ(text("fr", 999'995'000'000), "1 To");
}

TEST_F(ByteCountFormatterTest, showsNoFractionOfKilobytesOneDigitOfMegabytesTwoFromGigabytesOn) {
  EXPECT_EQ(text("fr", 1'499), "1 Ko");
  EXPECT_EQ(text("fr", 1'500), "2 Ko");
  EXPECT_EQ(text("fr", 2'500), "3 Ko");
  EXPECT_EQ(text("fr", 1'250'000), "1,3 Mo");
  EXPECT_EQ(text("fr", 1'234'567'890), "1,23 Go");
  EXPECT_EQ(text("fr", 12'345'678'901'234), "12,35 To");
  EXPECT_EQ(text("fr", 2'340'000'000'000'000), "2,34 Po");
  EXPECT_EQ(text("fr", std::numeric_limits<std::int64_t>::max()), "9,22 Eo");
}

TEST_F(ByteCountFormatterTest, dropsZerosAtTheEndOfTheFraction) {
  EXPECT_EQ(text("fr", 2'000'000), "2 Mo");
  EXPECT_EQ(text("fr", 1'500'000'000), "1,5 Go");
  EXPECT_EQ(text("fr", 100'000'000), "100 Mo");
}

TEST_F(ByteCountFormatterTest, keepsTheSignOfNegativeCounts) {
  EXPECT_EQ(text("fr", -1), "-1 octet");
  EXPECT_EQ(text("fr", -1'234'567), "-1,2 Mo");
  EXPECT_EQ(text("en", -2), "-2 bytes");
  EXPECT_EQ(text("fr", std::numeric_limits<std::int64_t>::min()), "-9,22 Eo");
}

/// The text of the formatter in a new process with `value` as the only language setting.
[[noreturn]] void sayMegabytes(const char* value) {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANGUAGE"}) unsetenv(name);
  if (value == nullptr) {
    unsetenv("LANG");
  } else {
    setenv("LANG", value, 1);
  }
  std::setlocale(LC_ALL, "");
  std::cerr << ByteCountFormatter().string(1'234'567);
  std::exit(0);
}

TEST(ByteCountFormatterDeathTest, takesItsLanguageFromTheEnvironment) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(sayMegabytes("fr_FR.UTF-8"), testing::ExitedWithCode(0), "^1,2 Mo$");
  EXPECT_EXIT(sayMegabytes("en_US.UTF-8"), testing::ExitedWithCode(0), "^1\\.2 MB$");
  EXPECT_EXIT(sayMegabytes("C"), testing::ExitedWithCode(0), "^1,2 Mo$");
  EXPECT_EXIT(sayMegabytes("C.UTF-8"), testing::ExitedWithCode(0), "^1,2 Mo$");
  EXPECT_EXIT(sayMegabytes(""), testing::ExitedWithCode(0), "^1,2 Mo$");
  EXPECT_EXIT(sayMegabytes(nullptr), testing::ExitedWithCode(0), "^1,2 Mo$");
}

}  // namespace
}  // namespace orvane
