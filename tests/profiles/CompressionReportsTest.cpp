#include "profiles/CompressionReports.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "platform/foundation/ByteCountFormatter.h"

namespace orvane {
namespace {

using CompressionReports::renderHumanReadable;
using CompressionReports::renderJSON;

const ImageCompressionResult compressed{.path = "photos/été.png",
                                        .originalSizeBytes = 1000,
                                        .compressedSizeBytes = 575,
                                        .ratio = 0.425,
                                        .destination = "/out/été.jpg"};
const ImageCompressionResult failed{
    .path = "b.png", .originalSizeBytes = 3, .error = "Impossible de décoder l'image source."};

TEST(JSONReport, writesTheFieldsThatHoldAValueSortedOnePerLine) {
  EXPECT_EQ(renderJSON(std::vector{compressed, failed}), R"([
  {
    "compressedSizeBytes" : 575,
    "destination" : "\/out\/été.jpg",
    "originalSizeBytes" : 1000,
    "path" : "photos\/été.png",
    "ratio" : 0.425
  },
  {
    "error" : "Impossible de décoder l'image source.",
    "originalSizeBytes" : 3,
    "path" : "b.png"
  }
])");
}

TEST(JSONReport, writesEveryFieldInOrder) {
  ImageCompressionResult everything = compressed;
  everything.error = "e";
  everything.ratio = -1;
  everything.originalSizeBytes = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(renderJSON(std::vector{everything}), R"([
  {
    "compressedSizeBytes" : 575,
    "destination" : "\/out\/été.jpg",
    "error" : "e",
    "originalSizeBytes" : 9223372036854775807,
    "path" : "photos\/été.png",
    "ratio" : -1
  }
])");
}

TEST(JSONReport, ofNothingIsAnEmptyArray) { EXPECT_EQ(renderJSON({}), "[\n\n]"); }

TEST(JSONReport, isNothingWhereARatioIsNoNumber) {
  for (const double ratio :
       {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    ImageCompressionResult unencodable = compressed;
    unencodable.ratio = ratio;
    EXPECT_EQ(renderJSON(std::vector{compressed, unencodable}), std::nullopt);
  }
}

TEST(JSONReport, survivesABadlyNamedFile) {
  ImageCompressionResult result = failed;
  result.path = "caf\xE9\n.png";
  result.error = "\"\xC3";
  EXPECT_EQ(renderJSON(std::vector{result}), R"([
  {
    "error" : "\"�",
    "originalSizeBytes" : 3,
    "path" : "caf�\n.png"
  }
])");
}

TEST(HumanReadableReport, listsResultsInOrderAndCountsFailures) {
  const ByteCountFormatter sizes;
  EXPECT_EQ(renderHumanReadable(std::vector{failed, compressed, failed}),
            "b.png : échec — Impossible de décoder l'image source.\n"
            "photos/été.png : " +
                sizes.string(1000) + " → " + sizes.string(575) +
                " (-43%) → /out/été.jpg\n"
                "b.png : échec — Impossible de décoder l'image source.\n"
                "\n"
                "3 fichier(s) traité(s), 2 échec(s).");
}

TEST(HumanReadableReport, ofNothingIsAnEmptyLineAndTheSummary) {
  EXPECT_EQ(renderHumanReadable({}), "\n0 fichier(s) traité(s), 0 échec(s).");
}

TEST(HumanReadableReport, readsAbsentFieldsAsNothing) {
  const ByteCountFormatter sizes;
  EXPECT_EQ(renderHumanReadable(std::vector<ImageCompressionResult>{{.path = "a"}}),
            "a : " + sizes.string(0) + " → " + sizes.string(0) +
                " (-0%) → \n\n1 fichier(s) traité(s), 0 échec(s).");
}

std::string percentage(double ratio) {
  ImageCompressionResult result = compressed;
  result.ratio = ratio;
  const std::string report = renderHumanReadable(std::vector{result});
  const std::size_t begin = report.find('(') + 1;
  return report.substr(begin, report.find(')') - begin);
}

TEST(HumanReadableReport, showsSavingsWithAMinusAndGrowthWithAPlus) {
  EXPECT_EQ(percentage(0.425), "-43%");
  EXPECT_EQ(percentage(-0.1), "+10%");
  EXPECT_EQ(percentage(0), "-0%");
  EXPECT_EQ(percentage(1), "-100%");
  EXPECT_EQ(percentage(-41), "+4100%");
}

TEST(HumanReadableReport, roundsHalvesAwayFromZero) {
  EXPECT_EQ(percentage(0.005), "-1%");
  EXPECT_EQ(percentage(-0.005), "+1%");
  EXPECT_EQ(percentage(-0.004), "+0%");
  EXPECT_EQ(percentage(0.124), "-12%");
}

TEST(HumanReadableReport, writesAnyGrowthInPlainDigits) {
  EXPECT_EQ(percentage(-2147483647.0), "+214748364700%");
  EXPECT_EQ(percentage(-1e20), "+10000000000000000000000%");
}

}  // namespace
}  // namespace orvane
