#include "platform/foundation/Text.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

using namespace std::string_literals;

TEST(Text, lowersEveryLetterThatHasALowerCase) {
  EXPECT_EQ(Text::lowercased("JPEG"), "jpeg");
  EXPECT_EQ(Text::lowercased("ÉTÉ Œuvre ΑΣ Ж"), "été œuvre ας ж");
  EXPECT_EQ(Text::lowercased(""), "");
}

TEST(Text, lowersTheSameWayInEveryLanguage) {
  EXPECT_EQ(Text::lowercased("TIFF I"), "tiff i");  // not the dotless ı of Turkish
}

TEST(Text, lowersBytesThatAreNotUTF8ToReplacementCharacters) {
  EXPECT_EQ(Text::lowercased("A\xFF"
                             "B"),
            "a\uFFFDb");
}

TEST(Text, givesOneKeyToNamesThatDifferInCaseAndCompositionOnly) {
  EXPECT_EQ(Text::nameKey("E\u0301T\u00C9.PNG"), "\u00E9t\u00E9.png");
  EXPECT_NE(Text::nameKey("\u00E9"), Text::nameKey("e"));
  EXPECT_EQ(Text::nameKey("A\xFF"), "a\uFFFD");
  EXPECT_EQ(Text::nameKey(""), "");
}

TEST(Text, comparesWithoutLetterCase) {
  EXPECT_TRUE(Text::equalsIgnoringCase("Web", "wEB"));
  EXPECT_TRUE(Text::equalsIgnoringCase("ÉTÉ", "été"));
  EXPECT_TRUE(Text::equalsIgnoringCase("", ""));
  EXPECT_FALSE(Text::equalsIgnoringCase("Web", "Webs"));
  EXPECT_FALSE(Text::equalsIgnoringCase("Web", " Web"));
}

TEST(Text, comparesWithAccents) {
  EXPECT_FALSE(Text::equalsIgnoringCase("é", "e"));
  EXPECT_FALSE(Text::equalsIgnoringCase("É", "E"));
}

TEST(Text, comparesComposedAndDecomposedLettersAsEqual) {
  EXPECT_TRUE(Text::equalsIgnoringCase("\u00C9", "e\u0301"));
  EXPECT_TRUE(Text::equalsIgnoringCase("E\u0301t\u00C9", "\u00E9TE\u0301"));
}

TEST(Text, comparesByFullCaseFolding) {
  EXPECT_TRUE(Text::equalsIgnoringCase("STRASSE", "Straße"));
}

TEST(Text, trimsWhiteSpaceAtBothEndsOnly) {
  EXPECT_EQ(Text::trimmed("  Web  site\t"), "Web  site");
  EXPECT_EQ(Text::trimmed("Web"), "Web");
  EXPECT_EQ(Text::trimmed(""), "");
  EXPECT_EQ(Text::trimmed(" \t\r\n\v\f "), "");
}

TEST(Text, trimsEveryWhiteSpaceOfUnicode) {
  EXPECT_EQ(Text::trimmed("\u00A0\u2003\u3000é\u2028\u2029\u0085\u202F"), "é");
  EXPECT_EQ(Text::trimmed("\u200Bé"), "\u200Bé");  // zero width space is none of them
}

TEST(Text, trimsAroundBytesThatAreNotUTF8AndKeepsThem) {
  EXPECT_EQ(Text::trimmed(" \xFFx\xC3 "), "\xFFx\xC3");
}

TEST(Text, replacesControlCharactersAndNothingElse) {
  EXPECT_EQ(Text::withoutControlCharacters("\x01\x1F \x7E\x7F\u0080\u009F\u00A0\0x"s),
            "?? ~???\u00A0?x");
  for (const std::string& text : {""s, "photo.png"s, "é 画像 🎞"s, "\u2028\u200D"s}) {
    EXPECT_EQ(Text::withoutControlCharacters(text), text);
  }
  EXPECT_EQ(Text::withoutControlCharacters("\x9B\n\xE9"), "\uFFFD?\uFFFD");
}

TEST(Text, keepsWellFormedTextAsItIs) {
  for (const std::string& text : {""s, "photo.png"s, "é 画像 🎞"s, "a\0b"s, "\uFFFD"s}) {
    EXPECT_EQ(Text::wellFormed(text), text);
  }
}

// The examples of Unicode 15, section 3.9, tables 3-8 to 3-11.
TEST(Text, replacesEachMaximalSubpartOfAnIllFormedSequence) {
  const std::string r = "\uFFFD";
  EXPECT_EQ(Text::wellFormed("\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41"),
            r + r + r + r + r + r + r + r + "A");
  EXPECT_EQ(Text::wellFormed("\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41"),
            r + r + r + r + r + r + r + r + "A");
  EXPECT_EQ(Text::wellFormed("\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42"),
            r + r + r + r + r + "A" + r + r + "B");
  EXPECT_EQ(Text::wellFormed("\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41"), r + r + r + r + "A");
}

TEST(Text, replacesIllFormedBytesAtTheStartAndAtTheEnd) {
  EXPECT_EQ(Text::wellFormed("\xE9t\xE9"), "\uFFFDt\uFFFD");
  EXPECT_EQ(Text::wellFormed("\xF0\x9F\x8E"), "\uFFFD");
}

}  // namespace
}  // namespace orvane
