// Every foreign picture of the conformance folder ends as its row of MANIFEST.tsv says: decoded
// upright at the size that stands there, or refused. One test per folder of pictures, so that they
// run at the same time and a failure says where.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "pipeline/ImageCompressor.h"
#include "pipeline/ImageDecoder.h"
#include "pipeline/ImageProcessingError.h"
#include "support/Corpus.h"
#include "support/TemporaryFolder.h"

namespace orvane {
namespace {

struct Row {
  std::string path;
  std::string expected;
  std::string displayedSize;  ///< "640x480", or "-"
};

std::vector<std::string> fields(const std::string& line) {
  std::vector<std::string> values;
  std::istringstream stream(line);
  for (std::string value; std::getline(stream, value, '\t');) values.push_back(value);
  return values;
}

std::vector<Row> rowsOf(const std::string& folder) {
  std::ifstream manifest(test::corpusFolder() / "conformance" / "MANIFEST.tsv");
  std::string line;
  std::getline(manifest, line);
  const std::vector<std::string> header = fields(line);
  const auto column = [&](const std::string& name) {
    return static_cast<std::size_t>(std::ranges::find(header, name) - header.begin());
  };
  const std::size_t path = column("path"), expected = column("expected"),
                    size = column("displayed_width_x_height");
  std::vector<Row> rows;
  while (std::getline(manifest, line)) {
    const std::vector<std::string> values = fields(line);
    if (values.at(path).starts_with(folder + "/")) {
      rows.push_back({values.at(path), values.at(expected), values.at(size)});
    }
  }
  return rows;
}

std::string sizeOf(const Image& image) {
  return std::to_string(image.width) + "x" + std::to_string(image.height);
}

/// The size at which a file decodes, or nothing when it is refused.
std::optional<std::string> decodedSize(const std::string& path) try {
  return sizeOf(ImageDecoder::decodeImageSource(test::readFile(path)).image);
} catch (const ImageProcessingError& error) {
  EXPECT_EQ(error.errorCase(), ImageProcessingError::Case::decodingFailed) << path;
  return std::nullopt;
}

/// Rows that this system decides otherwise, each with its reason.
const std::map<std::string, std::string> exceptions{};

/// What is wrong with the way the file ended; empty when nothing is.
std::string complaint(const Row& row, const std::optional<std::string>& size) {
  if (exceptions.contains(row.path)) return "";
  if (row.expected == "decodes" && !size) return "refused";
  if (row.expected.starts_with("must be refused") && size) return "decoded at " + *size;
  const bool sizeIsKnown = row.displayedSize.find('x') != std::string::npos;
  if (size && sizeIsKnown && *size != row.displayedSize) {
    return *size + " in place of " + row.displayedSize;
  }
  return "";
}

class Conformance : public testing::TestWithParam<const char*> {};

TEST_P(Conformance, decodesOrRefusesEachFileAsItsRowSays) {
  ORVANE_REQUIRE_CORPUS();
  const std::vector<Row> rows = rowsOf(GetParam());
  ASSERT_FALSE(rows.empty());
  for (const Row& row : rows) {
    const std::string path = (test::corpusFolder() / "conformance" / row.path).string();
    const std::string wrong = complaint(row, decodedSize(path));
    EXPECT_TRUE(wrong.empty()) << row.path << " (" << row.expected << "): " << wrong;
  }
}

INSTANTIATE_TEST_SUITE_P(Corpus, Conformance,
                         testing::Values("png", "jpeg", "webp", "heic", "avif", "jxl", "other"),
                         [](const auto& folder) { return std::string(folder.param); });

}  // namespace
}  // namespace orvane
