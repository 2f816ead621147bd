// Reports of files that cannot be compressed.

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "picture/ImageProcessingError.h"
#include "platform/foundation/UUID.h"
#include "support/PNGBuilder.h"
#include "support/RunTool.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

const std::string undecodable = ImageProcessingError::decodingFailed().localizedDescription();

struct FailureReportEndToEnd : testing::Test {
  test::Tool tool;
  const std::string missing = std::strerror(ENOENT);
  const std::string isAFolder = std::strerror(EISDIR);

  FailureReportEndToEnd() { tool.environment["LC_ALL"] = "C"; }

  void expectReport(const std::vector<std::string>& arguments, const std::string& report) {
    const test::ToolRun run = tool.run(arguments);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.output, report);
  }
};

TEST_F(FailureReportEndToEnd, listsEveryFileInInputOrder) {
  test::writeFile(tool.folder / "text.png", "no picture");
  test::writeFile(tool.folder / "empty.png", "");
  fs::create_directory(tool.folder / "folder");
  expectReport({"text.png", "missing.png", "--output", "out", "folder", "empty.png", "--jobs", "3"},
               "text.png : échec — " + undecodable +
                   "\n"
                   "missing.png : échec — " +
                   missing +
                   "\n"
                   "folder : échec — " +
                   isAFolder +
                   "\n"
                   "empty.png : échec — " +
                   undecodable +
                   "\n"
                   "\n"
                   "4 fichier(s) traité(s), 4 échec(s).\n");
  EXPECT_EQ(tool.folder.names(), (Names{"empty.png", "folder", "out", "text.png"}));
  EXPECT_TRUE(fs::is_empty(tool.folder / "out"));
}

TEST_F(FailureReportEndToEnd, tellsMachinesTheSame) {
  test::writeFile(tool.folder / "text.png", "no picture");
  expectReport({"--json", "text.png", "a/missing.png", "--output", "out"},
               "[\n"
               "  {\n"
               "    \"error\" : \"" +
                   undecodable +
                   "\",\n"
                   "    \"originalSizeBytes\" : 10,\n"
                   "    \"path\" : \"text.png\"\n"
                   "  },\n"
                   "  {\n"
                   "    \"error\" : \"" +
                   missing +
                   "\",\n"
                   "    \"originalSizeBytes\" : 0,\n"
                   "    \"path\" : \"a\\/missing.png\"\n"
                   "  }\n"
                   "]\n");
}

TEST_F(FailureReportEndToEnd, escapesWhatAFileMayBeCalled) {
  expectReport(
      {"--json", "\"q\" \\ \b\f\n\r\t\x01\x1f\x7f/été 图 caf\xE9\xE9.png", "--output", "out"},
      "[\n"
      "  {\n"
      "    \"error\" : \"" +
          missing +
          "\",\n"
          "    \"originalSizeBytes\" : 0,\n"
          "    \"path\" : \"\\\"q\\\" \\\\ \\b\\f\\n\\r\\t\\u0001\\u001f\x7f\\/été 图 "
          "caf\uFFFD\uFFFD.png\"\n"
          "  }\n"
          "]\n");
}

TEST_F(FailureReportEndToEnd, showsABadlyNamedFileToPeople) {
  expectReport({"caf\xE9.png", "--output", "out"}, "caf\uFFFD.png : échec — " + missing +
                                                       "\n"
                                                       "\n"
                                                       "1 fichier(s) traité(s), 1 échec(s).\n");
}

TEST_F(FailureReportEndToEnd, createsEveryMissingFolderOfTheOutput) {
  EXPECT_EQ(tool.run({"missing.png", "--output", "a/b/c"}).status, 1);
  EXPECT_TRUE(fs::is_directory(tool.folder / "a/b/c"));
}

TEST_F(FailureReportEndToEnd, failsEachFileInACurrentFolderThatIsGone) {
  const test::TemporaryFolder sources;
  const std::string name = UUID::random().string();
  test::writeFile(sources / name + ".png", test::buildPNG({.pixelAt = [](auto, auto) {
                    return test::Pixel{1, 2, 3, 4};
                  }}));
  fs::remove(tool.folder.path());
  for (const std::string folder : {"", ".", "a/..", "out"}) {
    const test::ToolRun run =
        tool.run({sources / name + ".png", "relative.png", "--output", folder, "--format", "png"});
    EXPECT_EQ(run.status, 1) << folder;
    EXPECT_TRUE(run.output.ends_with("\n\n2 fichier(s) traité(s), 2 échec(s).\n")) << run.output;
    EXPECT_EQ(run.errors, "");
    EXPECT_FALSE(fs::remove("/" + name + ".png")) << folder;
  }
}

TEST_F(FailureReportEndToEnd, arrivesWholeOnAPipeThatDoesNotWait) {
  std::vector<std::string> arguments{"--output", "out"};
  for (int i = 0; i < 500; ++i) arguments.push_back("missing" + std::to_string(i) + ".png");
  const std::string report = tool.run(arguments).output;
  EXPECT_GT(report.size(), 16'384u);
  EXPECT_TRUE(report.ends_with("\n\n500 fichier(s) traité(s), 500 échec(s).\n"));
  EXPECT_EQ(tool.run(arguments, test::Output::reluctant).output, report);
}

TEST_F(FailureReportEndToEnd, isDroppedWhereStandardOutputIsClosed) {
  const test::ToolRun run = tool.run({"missing.png", "--output", "out"}, test::Output::closed);
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.errors, "");
}

bool hasTerminals() {
  return test::Descriptor(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)).number() != -1;
}

TEST_F(FailureReportEndToEnd, showsNoControlCharacterToATerminal) {
  if (!hasTerminals()) GTEST_SKIP() << "this machine has no terminals to give";
  const std::string name = "a\n\x1b[31m\x7f\u009b2J\xC2 é.png";
  const std::vector<std::string> arguments{name, "--output", "out"};
  const std::string rest = " : échec — " + missing + "\n\n1 fichier(s) traité(s), 1 échec(s).\n";
  EXPECT_EQ(tool.run(arguments, test::Output::terminal).output, "a??[31m??2J\uFFFD é.png" + rest);
  EXPECT_EQ(tool.run(arguments).output, "a\n\x1b[31m\x7f\u009b2J\uFFFD é.png" + rest);
}

TEST_F(FailureReportEndToEnd, showsNoControlCharacterOfTheOutputFolderToATerminal) {
  if (!hasTerminals()) GTEST_SKIP() << "this machine has no terminals to give";
  test::writeFile(tool.folder / "a.png", test::buildPNG({.pixelAt = [](auto, auto) {
                    return test::Pixel{1, 2, 3, 4};
                  }}));
  test::writeFile(tool.folder / "a\tfile", "");
  const auto report = [&](const std::string& folder) {
    return tool.run({"a.png", "--format", "png", "--output", folder}, test::Output::terminal)
        .output;
  };
  EXPECT_NE(report("out\x1b").find(" → " + tool.folder / "out?/a.png\n"), std::string::npos);
  EXPECT_NE(report("a\tfile").find(" : échec — " + tool.folder / "a?file : "), std::string::npos);
}

TEST_F(FailureReportEndToEnd, readsInputsNamedLikeOneDash) {
  expectReport({"-v", "-", "--output", "--json"}, "-v : échec — " + missing +
                                                      "\n"
                                                      "- : échec — " +
                                                      missing +
                                                      "\n"
                                                      "\n"
                                                      "2 fichier(s) traité(s), 2 échec(s).\n");
  EXPECT_EQ(tool.folder.names(), Names{"--json"});
}

}  // namespace
}  // namespace orvane
