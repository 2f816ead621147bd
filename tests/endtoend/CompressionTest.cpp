// Runs of the program on pictures: what it writes, what it reports, and how it goes on past what
// it cannot read.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>

#include "picture/ImageProcessingError.h"
#include "pipeline/ImageCompressor.h"
#include "pipeline/ImageDecoder.h"
#include "profiles/JSONText.h"
#include "support/RunTool.h"
#include "support/TestFiles.h"
#include "support/TestImages.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;
using test::jpegFile;
using test::pngFile;
using test::readFile;
using test::ToolRun;
using test::writeFile;

struct CompressionEndToEnd : testing::Test {
  test::Tool tool;

  CompressionEndToEnd() { tool.environment["LC_ALL"] = "C"; }

  void write(const std::string& name, ByteView bytes) const {
    const fs::path path = tool.folder / name;
    fs::create_directories(path.parent_path());
    writeFile(path, bytes);
  }

  /// The report of a run, which must end with `status` and say nothing else.
  std::string reportOf(const Names& arguments, int status = 0) const {
    const ToolRun run = tool.run(arguments);
    EXPECT_EQ(run.status, status);
    EXPECT_EQ(run.errors, "");
    return run.output;
  }

  std::uintmax_t size(const std::string& name) const { return fs::file_size(tool.folder / name); }

  Names namesIn(const std::string& folder) const {
    Names names;
    for (const auto& entry : fs::directory_iterator(tool.folder / folder)) {
      names.push_back(entry.path().filename());
    }
    std::ranges::sort(names);
    return names;
  }

  ImageFormat formatOf(const std::string& name) const {
    return ImageDecoder::decodeImageSource(readFile(tool.folder / name)).format;
  }

  /// The record of `input`, compressed to `output`, in the report for machines.
  std::string jsonRecord(const std::string& input, const std::string& output) const {
    const double ratio = 1 - static_cast<double>(size(output)) / static_cast<double>(size(input));
    return "  {\n    \"compressedSizeBytes\" : " + std::to_string(size(output)) +
           ",\n    \"destination\" : " + JSONText::string(tool.folder / output) +
           ",\n    \"originalSizeBytes\" : " + std::to_string(size(input)) +
           ",\n    \"path\" : " + JSONText::string(input) +
           ",\n    \"ratio\" : " + JSONText::number(ratio) + "\n  }";
  }

  std::string jsonFailure(const std::string& input, const std::string& error,
                          std::uintmax_t inputSize) const {
    return "  {\n    \"error\" : " + JSONText::string(error) +
           ",\n    \"originalSizeBytes\" : " + std::to_string(inputSize) +
           ",\n    \"path\" : " + JSONText::string(input) + "\n  }";
  }
};

TEST_F(CompressionEndToEnd, writesJPEGByDefaultIntoANewFolder) {
  write("in/a.png", pngFile(test::noisyImage(40, 30)));
  write("b.jpeg", jpegFile(test::noisyImage(30, 40)));
  const std::string report = reportOf({"in/a.png", "--output", "new/folder", "b.jpeg", "--json"});
  EXPECT_EQ(report, "[\n" + jsonRecord("in/a.png", "new/folder/a.jpg") + ",\n" +
                        jsonRecord("b.jpeg", "new/folder/b.jpg") + "\n]\n");
  EXPECT_EQ(namesIn("new/folder"), (Names{"a.jpg", "b.jpg"}));
  EXPECT_EQ(formatOf("new/folder/a.jpg"), ImageFormat::jpeg);
  EXPECT_EQ(formatOf("new/folder/b.jpg"), ImageFormat::jpeg);
}

TEST_F(CompressionEndToEnd, writesEveryFormat) {
  write("a.png", pngFile(test::noisyImage(40, 30)));
  for (const std::string format : {"PNG", "jpeg", "heic", "avif", "webp", "jxl"}) {
    reportOf({"a.png", "--output", "out", "--format", format});
  }
  EXPECT_EQ(namesIn("out"), (Names{"a.avif", "a.heic", "a.jpg", "a.jxl", "a.png", "a.webp"}));
  for (const ImageFormat format : ImageFormat::allCases) {
    EXPECT_EQ(formatOf("out/a." + std::string(format.fileExtension())), format);
  }
}

TEST_F(CompressionEndToEnd, speaksToPeopleInTheirUnits) {
  Bytes file = pngFile(test::gradientImage(8, 8));
  file.resize(1'234'567);  // what follows the end of a PNG file does not count
  write("a.png", file);
  const auto expectReport = [&](const std::string& before, const std::string& unit) {
    const std::string report = reportOf({"a.png", "--output", "out"});
    ASSERT_LT(size("out/a.jpg"), 1000u);
    EXPECT_EQ(report, "a.png : " + before + " → " + std::to_string(size("out/a.jpg")) + " " + unit +
                          " (-100%) → " + tool.folder / "out/a.jpg" +
                          "\n\n1 fichier(s) traité(s), 0 échec(s).\n");
  };
  expectReport("1,2 Mo", "octets");
  tool.environment["LC_ALL"] = "";
  expectReport("1,2 Mo", "octets");
  tool.environment["LANG"] = "fr_FR.UTF-8";
  expectReport("1,2 Mo", "octets");
  tool.environment["LANG"] = "en_US.UTF-8";
  expectReport("1.2 MB", "bytes");
}

TEST_F(CompressionEndToEnd, keepsAnOutputThatIsLarger) {
  const Image image = test::noisyImage(40, 30);
  write("a.jpg", jpegFile(image, 0.1));
  const std::string report = reportOf({"a.jpg", "--output", "out", "--quality", "100"});
  ASSERT_GT(size("out/a.jpg"), size("a.jpg"));
  const double growth =
      static_cast<double>(size("out/a.jpg")) / static_cast<double>(size("a.jpg")) - 1;
  const std::string percentage = "(+" + std::to_string(std::lround(growth * 100)) + "%)";
  EXPECT_NE(report.find(percentage), std::string::npos) << report << percentage;
}

TEST_F(CompressionEndToEnd, goesOnPastWhatItCannotRead) {
  Bytes truncated = jpegFile(test::noisyImage(60, 60));
  truncated.resize(truncated.size() / 2);
  write("good.png", pngFile(test::gradientImage(20, 20)));
  write("empty.png", {});
  writeFile(tool.folder / "text.png", "no picture");
  write("truncated.jpg", truncated);
  fs::create_directory(tool.folder / "folder");
  write("last.jpg", jpegFile(test::gradientImage(20, 20)));
  const auto folderSize =
      static_cast<std::uintmax_t>(ImageCompressor::fileSize(tool.folder / "folder"));
  const Names before = tool.folder.names();

  const Names arguments{"good.png", "missing.png", "empty.png", "text.png", "truncated.jpg",
                        "folder",   "last.jpg",    "--output",  "out",      "--format",
                        "webp",     "--jobs",      "3"};
  const std::string missing = std::strerror(ENOENT);
  const std::string isAFolder = std::strerror(EISDIR);
  const std::string undecodable = ImageProcessingError::decodingFailed().localizedDescription();
  const std::string report = reportOf(arguments, 1);
  const auto firstLine = report.find('\n') + 1;
  EXPECT_TRUE(report.starts_with("good.png : ")) << report;
  const std::string failures = "missing.png : échec — " + missing +
                               "\n"
                               "empty.png : échec — " +
                               undecodable +
                               "\n"
                               "text.png : échec — " +
                               undecodable +
                               "\n"
                               "truncated.jpg : échec — " +
                               undecodable +
                               "\n"
                               "folder : échec — " +
                               isAFolder +
                               "\n"
                               "last.jpg : ";
  EXPECT_EQ(report.substr(firstLine, failures.size()), failures);
  EXPECT_TRUE(report.ends_with("\n\n7 fichier(s) traité(s), 5 échec(s).\n")) << report;

  Names jsonArguments = arguments;
  jsonArguments.push_back("--json");
  EXPECT_EQ(reportOf(jsonArguments, 1),
            "[\n" + jsonRecord("good.png", "out/good.webp") + ",\n" +
                jsonFailure("missing.png", missing, 0) + ",\n" +
                jsonFailure("empty.png", undecodable, 0) + ",\n" +
                jsonFailure("text.png", undecodable, 10) + ",\n" +
                jsonFailure("truncated.jpg", undecodable, truncated.size()) + ",\n" +
                jsonFailure("folder", isAFolder, folderSize) + ",\n" +
                jsonRecord("last.jpg", "out/last.webp") + "\n]\n");

  EXPECT_EQ(namesIn("out"), (Names{"good.webp", "last.webp"}));
  Names after = before;
  after.insert(std::ranges::upper_bound(after, "out"), "out");
  EXPECT_EQ(tool.folder.names(), after);
}

TEST_F(CompressionEndToEnd, failsEachFileWhereTheFolderIsAFileOrBelowOne) {
  write("a.png", pngFile(test::gradientImage(8, 8)));
  write("b.png", pngFile(test::gradientImage(8, 8)));
  writeFile(tool.folder / "out", "in the way");
  for (const std::string folder : {"out", "out/below", "out/below/that"}) {
    const std::string error = tool.folder / folder + " : " + std::strerror(ENOTDIR);
    EXPECT_EQ(reportOf({"a.png", "b.png", "--output", folder}, 1),
              "a.png : échec — " + error + "\nb.png : échec — " + error +
                  "\n\n2 fichier(s) traité(s), 2 échec(s).\n");
  }
  EXPECT_EQ(size("out"), 10u);
  EXPECT_EQ(tool.folder.names(), (Names{"a.png", "b.png", "out"}));
}

TEST_F(CompressionEndToEnd, tellsAMissingSourceFromAFolderThatCannotBeMade) {
  write("a.png", pngFile(test::gradientImage(8, 8)));
  fs::create_symlink("nowhere/folder", tool.folder / "out");
  const std::string missing = std::strerror(ENOENT);
  EXPECT_EQ(reportOf({"a.png", "none.png", "--output", "out"}, 1),
            "a.png : échec — " + tool.folder / "out" + " : " + missing + "\nnone.png : échec — " +
                missing + "\n\n2 fichier(s) traité(s), 2 échec(s).\n");
}

/// The size past which programs that are started while this lives cannot write a file.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &former_);
    const rlimit limit{bytes, former_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &former_); }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit former_ = {};
};

TEST_F(CompressionEndToEnd, failsOnlyTheFileThatGrowsPastTheUsersLimit) {
  write("large.png", pngFile(test::noisyImage(200, 200)));
  write("small.png", pngFile(test::gradientImage(8, 8)));
  ToolRun run;
  {
    const FileSizeLimit limit(4096);
    run = tool.run({"large.png", "small.png", "--output", "out"});
  }
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.errors, "");
  const std::string failure = std::string("large.png : échec — ") + std::strerror(EFBIG) + "\n";
  EXPECT_TRUE(run.output.starts_with(failure + "small.png : ")) << run.output;
  EXPECT_EQ(namesIn("out"), Names{"small.jpg"});
}

TEST_F(CompressionEndToEnd, givesInputsOfOneNameTheirOwnOutputs) {
  write("x/photo.png", pngFile(test::gradientImage(8, 8)));
  write("y/photo.jpg", jpegFile(test::gradientImage(9, 9)));
  write("y/PHOTO.final.png", pngFile(test::gradientImage(10, 10)));
  write("z/Photo.png", pngFile(test::gradientImage(11, 11)));
  reportOf({"x/photo.png", "y/photo.jpg", "y/PHOTO.final.png", "z/Photo.png", "--output", "out"});
  EXPECT_EQ(namesIn("out"), (Names{"PHOTO.final.jpg", "Photo-3.jpg", "photo-2.jpg", "photo.jpg"}));
  const auto width = [&](const std::string& name) {
    return ImageDecoder::decodeImageSource(readFile(tool.folder / name)).image.width;
  };
  EXPECT_EQ(width("out/photo.jpg"), 8u);
  EXPECT_EQ(width("out/photo-2.jpg"), 9u);
  EXPECT_EQ(width("out/PHOTO.final.jpg"), 10u);
  EXPECT_EQ(width("out/Photo-3.jpg"), 11u);
}

TEST_F(CompressionEndToEnd, replacesWhatAnEarlierRunWrote) {
  write("a.png", pngFile(test::gradientImage(8, 8)));
  write("out/a.jpg", {});
  reportOf({"a.png", "--output", "out"});
  EXPECT_EQ(namesIn("out"), Names{"a.jpg"});
  EXPECT_EQ(formatOf("out/a.jpg"), ImageFormat::jpeg);
}

TEST_F(CompressionEndToEnd, mayReplaceItsOwnInput) {
  write("a.jpg", jpegFile(test::noisyImage(40, 30)));
  const auto sizeBefore = size("a.jpg");
  reportOf({"a.jpg", "--output", "", "--quality", "30"});
  EXPECT_LT(size("a.jpg"), sizeBefore);
  EXPECT_EQ(tool.folder.names(), Names{"a.jpg"});
}

TEST_F(CompressionEndToEnd, readsEverySourceBeforeAnotherFileReplacesIt) {
  // Made on their own, as each file must become whatever the batch does.
  write("x/a.png", pngFile(test::noisyImage(90, 60)));
  write("y/a.png", pngFile(test::noisyImage(33, 77)));
  reportOf({"x/a.png", "y/a.png", "--format", "png", "--output", "expected"});
  for (const std::string jobs : {"1", "2", "8"}) {
    write("a.png", readFile(tool.folder / "y/a.png"));
    const Names arguments{"x/a.png", "a.png", "x/../none.png", "--format", "png",
                          "--jobs",  jobs,    "--output",      ".",        "--json"};
    const auto report = nlohmann::json::parse(reportOf(arguments, 1));
    EXPECT_EQ(report.at(0).at("destination"), tool.folder / "a.png");
    EXPECT_EQ(report.at(1).at("destination"), tool.folder / "a-2.png");
    EXPECT_EQ(readFile(tool.folder / "a.png"), readFile(tool.folder / "expected/a.png"));
    EXPECT_EQ(readFile(tool.folder / "a-2.png"), readFile(tool.folder / "expected/a-2.png"));
    EXPECT_EQ(tool.folder.names(), (Names{"a-2.png", "a.png", "expected", "x", "y"}));
    fs::remove(tool.folder / "a-2.png");
  }
}

TEST_F(CompressionEndToEnd, leavesASourceWhereWhatWouldReplaceItFails) {
  writeFile(tool.folder / "text.png", "no picture");
  write("x/a.png", readFile(tool.folder / "text.png"));
  const Bytes source = pngFile(test::noisyImage(33, 77));
  write("a.png", source);
  write("x/b.png", source);
  write("b.png", readFile(tool.folder / "text.png"));
  for (const std::string jobs : {"1", "8"}) {
    const Names arguments{"x/a.png", "a.png", "--format", "png", "--jobs", jobs, "--output", "."};
    EXPECT_TRUE(reportOf(arguments, 1).ends_with("2 fichier(s) traité(s), 1 échec(s).\n"));
    EXPECT_EQ(readFile(tool.folder / "a.png"), source);
  }
  reportOf({"x/b.png", "b.png", "--format", "png", "--output", "."}, 1);
  EXPECT_EQ(readFile(tool.folder / "b.png"), readFile(tool.folder / "a-2.png"));
  EXPECT_EQ(tool.folder.names(), (Names{"a-2.png", "a.png", "b.png", "text.png", "x"}));
}

TEST_F(CompressionEndToEnd, givesTheSameBytesForEveryNumberOfJobs) {
  write("a.png", pngFile(test::noisyImage(90, 60)));
  write("b.png", pngFile(test::noisyImage(33, 77)));
  Names sources;  // two of each kind
  for (const ImageFormat kind : ImageFormat::allCases) {
    const std::string name(kind.rawValue());
    reportOf({"a.png", "b.png", "--output", "sources", "--format", name});
    for (const std::string base : {"a.", "b."}) {
      sources.push_back("sources/" + base + std::string(kind.fileExtension()));
    }
  }
  for (const ImageFormat format : ImageFormat::allCases) {
    const std::string name(format.rawValue());
    const auto compress = [&](const std::string& jobs) {
      Names arguments{"--format", name, "--output", name + jobs, "--jobs", jobs};
      arguments.insert(arguments.end(), sources.begin(), sources.end());
      reportOf(arguments);
      return namesIn(name + jobs);
    };
    const Names outputs = compress("1");
    ASSERT_EQ(outputs.size(), sources.size());
    ASSERT_EQ(compress("4"), outputs);
    for (const std::string& output : outputs) {
      EXPECT_EQ(readFile(tool.folder / (name + "1/" + output)),
                readFile(tool.folder / (name + "4/" + output)))
          << output;
    }
  }
}

/// Where files are fewer than jobs, and for the last of a batch, threads share a picture.
TEST_F(CompressionEndToEnd, givesTheSameBytesWhereThreadsShareAPicture) {
  write("small.png", pngFile(test::noisyImage(90, 60)));
  write("large.png", pngFile(test::noisyImage(2100, 2000)));
  for (const ImageFormat format : ImageFormat::allCases) {
    const std::string name(format.rawValue());
    const std::string extension(format.fileExtension());
    const auto large = [&](const std::string& output, Names arguments) {
      arguments.insert(arguments.end(), {"--format", name, "--output", output});
      reportOf(arguments);
      return readFile(tool.folder / (output + "/large." + extension));
    };
    const Bytes alone = large(name + "1", {"large.png", "--jobs", "1"});
    for (const std::string jobs : {"2", "8"}) {
      EXPECT_EQ(large(name + jobs, {"large.png", "--jobs", jobs}), alone) << name << jobs;
      EXPECT_EQ(large(name + "last" + jobs,
                      {"small.png", "small.png", "small.png", "large.png", "--jobs", jobs}),
                alone)
          << name << jobs;
    }
  }
}

TEST_F(CompressionEndToEnd, keepsTheBytesOfABadName) {
  write("caf\xE9.png", pngFile(test::gradientImage(8, 8)));
  const std::string report = reportOf({"caf\xE9.png", "--output", "out", "--json"});
  const auto record = nlohmann::json::parse(report).at(0);
  EXPECT_EQ(record.at("path"), "caf\uFFFD.png");
  EXPECT_EQ(record.at("destination"), tool.folder / "out/caf\uFFFD.jpg");
  EXPECT_EQ(namesIn("out"), Names{"caf\xE9.jpg"});
}

TEST_F(CompressionEndToEnd, writesItsFilesWhereTheReportCannotBeWritten) {
  write("a.png", pngFile(test::gradientImage(8, 8)));
  const ToolRun closed = tool.run({"a.png", "--output", "closed"}, test::Output::closed);
  EXPECT_EQ(closed.status, 0);
  EXPECT_EQ(closed.errors, "");
  EXPECT_EQ(formatOf("closed/a.jpg"), ImageFormat::jpeg);
  for (const Names& form : {Names{}, Names{"--json"}}) {
    Names arguments{"a.png", "--output", "full" + std::to_string(form.size())};
    arguments.insert(arguments.end(), form.begin(), form.end());
    const ToolRun full = tool.run(arguments, test::Output::full);
    EXPECT_EQ(full.status, 1);
    EXPECT_EQ(full.errors, "Erreur : " + std::string(std::strerror(ENOSPC)) + "\n");
    EXPECT_EQ(formatOf(arguments[2] + "/a.jpg"), ImageFormat::jpeg);
  }
}

TEST_F(CompressionEndToEnd, appliesTheDefaultProfileBeneathTheOptions) {
  write("a.png", pngFile(test::noisyImage(60, 60)));
  fs::create_directories(tool.profileFile().parent_path());
  writeFile(tool.profileFile(), R"([{"id":"6BA7B810-9DAD-11D1-80B4-00C04FD430C8","name":"P",)"
                                R"("format":"webp","quality":20,"isDefault":true,)"
                                R"("destinationFolder":"file://)" +
                                    tool.folder.path().string() + R"(/F/"}])");
  reportOf({"a.png"});
  EXPECT_EQ(namesIn("F"), Names{"a.webp"});
  const auto sizeAt20 = size("F/a.webp");

  reportOf({"a.png", "--quality", "90"});
  EXPECT_GT(size("F/a.webp"), sizeAt20);

  reportOf({"a.png", "--format", "png", "--output", "G"});
  EXPECT_EQ(namesIn("G"), Names{"a.png"});
  EXPECT_EQ(namesIn("F"), Names{"a.webp"});
}

TEST_F(CompressionEndToEnd, appliesAProfileThatItHasCreated) {
  write("a.png", pngFile(test::gradientImage(20, 20)));
  fs::create_directory(tool.folder / "Été 1");
  ASSERT_EQ(tool.run({"--create-profile", "Été", "--format", "webp", "--quality", "60", "--output",
                      "Été 1"})
                .status,
            0);
  reportOf({"a.png", "--profile", "ÉTÉ"});
  EXPECT_EQ(namesIn("Été 1"), Names{"a.webp"});
}

}  // namespace
}  // namespace orvane
