// Every foreign picture of the conformance folder ends as its row of MANIFEST.tsv says: compressed
// to PNG and to JPEG, upright and at the size that stands there, or refused. One test per folder of
// pictures and format, so that they run at the same time and a failure says where.

#include <avif/avif.h>
#include <gtest/gtest.h>
#include <jxl/decode.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "picture/ImageProcessingError.h"
#include "pipeline/ImageCompressor.h"
#include "pipeline/ImageDecoder.h"
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

/// Stands for the size of a picture with a side that the output format cannot hold.
constexpr const char* tooLarge = "too large";

std::string sizeOf(const Image& image) {
  return std::to_string(image.width) + "x" + std::to_string(image.height);
}

/// The size at which a file comes out in `format`, or nothing when it is refused.
std::optional<std::string> compressedSize(const std::string& path, ImageFormat format) {
  const test::TemporaryFolder folder;
  const ImageCompressionResult result =
      ImageCompressor::compress(path, FileURL::fromPath(folder / ""), format, 90, "out");
  if (!result.error) {
    return sizeOf(ImageDecoder::decodeImageSource(test::readFile(*result.destination)).image);
  }
  if (*result.error == ImageProcessingError::encodingFailed(format).localizedDescription()) {
    return tooLarge;
  }
  EXPECT_EQ(*result.error, ImageProcessingError::decodingFailed().localizedDescription()) << path;
  return std::nullopt;
}

/// A file for which this system decides otherwise than its row in the manifest.
struct Exception {
  std::string_view path;
  std::string_view size;  ///< of the output; empty when the file is refused
  std::string_view reason;
  bool applies = true;
};

const bool oldLibavif = AVIF_VERSION < 1'00'00'00;
const bool oldLibjxl = JxlDecoderVersion() < 8000;

const Exception exceptions[]{
    {"heic/nokia/alpha.heic", "", "overlays are refused"},
    {"heic/nokia/C005.heic", "128x72", "the primary item is what is shown, though a thumbnail"},
    {"heic/pillow/invalid_id.heic", "1197x1227", "the primary item is what is shown"},
    {"avif/libavif/clap_irot_imir_non_essential.avif", "10x8",
     "libavif 0.11 does not ask whether a transformation is marked essential", oldLibavif},
    {"avif/libavif/colors-animated-8bpc-audio.avif", "",
     "libavif 0.11 wants a size of the sound track too", oldLibavif},
    {"avif/libavif/draw_points_idat_metasize0.avif", "",
     "libavif 0.11 knows no meta box that goes to the end of the file", oldLibavif},
    {"avif/libavif/draw_points_idat_progressive_metasize0.avif", "",
     "libavif 0.11 knows no meta box that goes to the end of the file", oldLibavif},
    {"jxl/libjxl-testdata/splines.jxl", "", "libjxl 0.7 has a lower limit for splines", oldLibjxl},
    {"other/misnamed/jxl-named.png", "", "libjxl 0.7 has a lower limit for splines", oldLibjxl},
    {"jxl/libjxl-testdata/square-extended-size-container.jxl", "",
     "libjxl 0.7 takes the box of 64-bit size for cut off", oldLibjxl},
};

const Exception* exceptionFor(const Row& row) {
  const auto* found = std::ranges::find(exceptions, row.path, &Exception::path);
  return found != std::end(exceptions) && found->applies ? found : nullptr;
}

/// The fault in the way the file ended; empty when there is none.
std::string complaint(const Row& row, const std::optional<std::string>& size) {
  const std::string ended = size ? "ended at " + *size : "refused";
  if (const Exception* exception = exceptionFor(row)) {
    const bool asExcepted = size.value_or("") == exception->size;
    return asExcepted ? "" : ended + ", though " + std::string(exception->reason);
  }
  const bool mustDecode = row.expected == "decodes";
  const bool mustBeRefused = row.expected.starts_with("must be refused");
  if ((mustDecode && !size) || (mustBeRefused && size)) return ended;
  const bool sizeIsKnown = row.displayedSize.find('x') != std::string::npos;
  return size && sizeIsKnown && *size != row.displayedSize ? ended : "";
}

/// libjpeg's own limit of a side is a little below that of ITU-T T.81.
bool exceedsJPEG(const Row& row) {
  return row.path.starts_with("png/size-derived/") &&
         row.displayedSize.find("100000") != std::string::npos;
}

class Conformance : public testing::TestWithParam<std::tuple<const char*, ImageFormat>> {};

TEST_P(Conformance, endsEachFileAsItsRowSays) {
  ORVANE_REQUIRE_CORPUS();
  const auto& [folder, format] = GetParam();
  const std::vector<Row> rows = rowsOf(folder);
  ASSERT_FALSE(rows.empty());
  for (const Row& row : rows) {
    const std::string path = (test::corpusFolder() / "conformance" / row.path).string();
    const auto size = compressedSize(path, format);
    if (format == ImageFormat::jpeg && exceedsJPEG(row)) {
      EXPECT_EQ(size, tooLarge) << row.path;
      continue;
    }
    const std::string wrong = complaint(row, size);
    EXPECT_TRUE(wrong.empty()) << row.path << " (" << row.expected << "): " << wrong;
  }
}

INSTANTIATE_TEST_SUITE_P(Corpus, Conformance,
                         testing::Combine(testing::Values("png", "jpeg", "webp", "heic", "avif",
                                                          "jxl", "other"),
                                          testing::Values(ImageFormat::png, ImageFormat::jpeg)),
                         [](const auto& parameters) {
                           return std::string(std::get<0>(parameters.param)) + "To" +
                                  std::string(std::get<1>(parameters.param).rawValue());
                         });

}  // namespace
}  // namespace orvane
