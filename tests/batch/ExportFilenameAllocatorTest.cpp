#include "batch/ExportFilenameAllocator.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

namespace orvane {
namespace {

using Names = std::vector<std::string>;

Names allocate(std::initializer_list<std::string_view> baseNames, std::string_view extension) {
  ExportFilenameAllocator allocator;
  Names names;
  for (const std::string_view baseName : baseNames) {
    names.push_back(allocator.filename(baseName, extension));
  }
  return names;
}

TEST(ExportFilenameAllocator, numbersRepeatsFromTwoAndKeepsTheLettersOfEach) {
  EXPECT_EQ(allocate({"a", "a", "A"}, "jpg"), (Names{"a.jpg", "a-2.jpg", "A-3.jpg"}));
}

TEST(ExportFilenameAllocator, avoidsNamesThatItHasNumberedItself) {
  EXPECT_EQ(allocate({"a", "a-2", "a"}, "png"), (Names{"a.png", "a-2.png", "a-3.png"}));
  EXPECT_EQ(allocate({"a", "a", "a-2"}, "png"), (Names{"a.png", "a-2.png", "a-2-2.png"}));
}

TEST(ExportFilenameAllocator, keepsTheDotsOfABaseName) {
  EXPECT_EQ(allocate({"Photo.Final", ".hidden", ""}, "heic"),
            (Names{"Photo.Final.heic", ".hidden.heic", ".heic"}));
}

TEST(ExportFilenameAllocator, ignoresTheCaseOfEveryLetter) {
  EXPECT_EQ(allocate({"ÉTÉ", "été", "ete"}, "jxl"), (Names{"ÉTÉ.jxl", "été-2.jxl", "ete.jxl"}));
}

TEST(ExportFilenameAllocator, ignoresTheCompositionOfEveryLetter) {
  EXPECT_EQ(allocate({"e\u0301", "\u00E9", "E\u0301"}, "jxl"),
            (Names{"e\u0301.jxl", "\u00E9-2.jxl", "E\u0301-3.jxl"}));
}

TEST(ExportFilenameAllocator, tellsExtensionsApart) {
  ExportFilenameAllocator allocator;
  EXPECT_EQ(allocator.filename("a", "png"), "a.png");
  EXPECT_EQ(allocator.filename("a", "webp"), "a.webp");
  EXPECT_EQ(allocator.filename("a", "PNG"), "a-2.PNG");
}

TEST(ExportFilenameAllocator, startsAfreshInEachRun) {
  EXPECT_EQ(allocate({"a"}, "png"), Names{"a.png"});
  EXPECT_EQ(allocate({"a"}, "png"), Names{"a.png"});
}

TEST(ExportFilenameAllocator, fillsTheGapsThatOtherLettersLeft) {
  // "a" counts from 2 for itself, past what "A" has taken and what was named so.
  EXPECT_EQ(allocate({"a-3", "a", "A", "a", "A", "a"}, "png"),
            (Names{"a-3.png", "a.png", "A-2.png", "a-4.png", "A-5.png", "a-6.png"}));
}

TEST(ExportFilenameAllocator, numbersTenThousandFilesOfOneName) {
  ExportFilenameAllocator allocator;
  std::string last;
  for (int i = 0; i < 10'000; ++i) last = allocator.filename("IMG", "jpg");
  EXPECT_EQ(last, "IMG-10000.jpg");
}

}  // namespace
}  // namespace orvane
