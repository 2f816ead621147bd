#include "cli/Options.h"

#include "platform/foundation/ProcessInfo.h"
#include "profiles/JSONFileStore.h"
#include "support/ProfileStoreTest.h"

namespace orvane {
namespace {

using Arguments = std::vector<std::string>;
using OptionsTest = test::ProfileStoreTest;

std::string errorOf(const Arguments& arguments) {
  try {
    parseArguments(arguments);
  } catch (const CLIError& error) {
    return error.localizedDescription();
  }
  return "no error";
}

/// The options of a command line with an input and a folder in front.
Options optionsWith(const Arguments& more) {
  Arguments arguments{"a.png", "--output", "/out"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return parseArguments(arguments);
}

std::string errorWith(const Arguments& more) {
  Arguments arguments{"a.png", "--output", "/out"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return errorOf(arguments);
}

const std::string formatMessage =
    "--format attend l'une de ces valeurs : png, jpeg, heic, avif, webp, jxl";
const std::string qualityMessage = "--quality attend un nombre entre 1 et 100";
const std::string jobsMessage = "--jobs attend un entier positif";

TEST_F(OptionsTest, haveDefaults) {
  const Options options = optionsWith({});
  EXPECT_EQ(options.inputPaths, Arguments{"a.png"});
  EXPECT_EQ(options.quality, 75);
  EXPECT_EQ(options.format, ImageFormat::jpeg);
  EXPECT_EQ(options.outputDirectory, FileURL::fromPath("/out"));
  EXPECT_FALSE(options.jsonOutput);
  EXPECT_EQ(options.jobs, ProcessInfo::activeProcessorCount());
}

TEST_F(OptionsTest, areReadAnywhereAmongTheInputs) {
  const Options options = parseArguments(
      Arguments{"--json", "a.png", "--quality", "72.5", "./b/../c.png", "--jobs", "3", "a.png",
                "--format", "webp", "--output", "/x/y/", "-v", "-", ""});
  EXPECT_EQ(options.inputPaths, (Arguments{"a.png", "./b/../c.png", "a.png", "-v", "-", ""}));
  EXPECT_EQ(options.quality, 72.5);
  EXPECT_EQ(options.format, ImageFormat::webp);
  EXPECT_EQ(options.outputDirectory.path(), "/x/y");
  EXPECT_TRUE(options.jsonOutput);
  EXPECT_EQ(options.jobs, 3);
}

TEST_F(OptionsTest, takeANumberFrom1To100AsQuality) {
  EXPECT_EQ(optionsWith({"--quality", "1"}).quality, 1);
  EXPECT_EQ(optionsWith({"--quality", "100"}).quality, 100);
  EXPECT_EQ(optionsWith({"--quality", "+7.25e1"}).quality, 72.5);
  EXPECT_EQ(optionsWith({"--quality", "0x1p5"}).quality, 32);
}

TEST_F(OptionsTest, showAQualityOutOfRangeInItsShortestForm) {
  const std::vector<std::pair<std::string, std::string>> rows{
      {"0", "0.0"},         {"101", "101.0"},     {"100.5", "100.5"}, {"150", "150.0"},
      {"0.5", "0.5"},       {"-3", "-3.0"},       {"-0", "-0.0"},     {"1e16", "1e+16"},
      {"1e5", "100000.0"},  {"0.00001", "1e-05"}, {"nan", "nan"},     {"inf", "inf"},
      {"-infinity", "-inf"}};
  for (const auto& [typed, shown] : rows) {
    EXPECT_EQ(errorWith({"--quality", typed}),
              "--quality doit être entre 1 et 100 (reçu " + shown + ")");
  }
}

TEST_F(OptionsTest, refuseAQualityThatIsNoNumber) {
  for (const std::string typed : {"abc", " 80", "\t80", "\n80", "\v80", "\f80", "\r80", "80%",
                                  "80 ", "8,5", "", "--json", "80.0.0"}) {
    EXPECT_EQ(errorWith({"--quality", typed}), qualityMessage) << typed;
  }
  EXPECT_EQ(errorWith({"--quality"}), qualityMessage);
}

TEST_F(OptionsTest, takeAFormatInAnyLetterCase) {
  EXPECT_EQ(optionsWith({"--format", "JPEG"}).format, ImageFormat::jpeg);
  EXPECT_EQ(optionsWith({"--format", "Png"}).format, ImageFormat::png);
  for (const std::string typed : {"jpg", "jpeg-xl", "tiff", "", " png", "JPEG XL"}) {
    EXPECT_EQ(errorWith({"--format", typed}), formatMessage) << typed;
  }
  EXPECT_EQ(errorWith({"--format"}), formatMessage);
}

TEST_F(OptionsTest, takeAPositiveWholeNumberOfJobs) {
  EXPECT_EQ(optionsWith({"--jobs", "+3"}).jobs, 3);
  EXPECT_EQ(optionsWith({"--jobs", "007"}).jobs, 7);
  EXPECT_EQ(optionsWith({"--jobs", "9223372036854775807"}).jobs, INT64_MAX);
  for (const std::string typed : {"0", "-2", "1.5", "x", "", "+", "-", "+-1", "++1", " 1", "1 ",
                                  "0x2", "9223372036854775808"}) {
    EXPECT_EQ(errorWith({"--jobs", typed}), jobsMessage) << typed;
  }
  EXPECT_EQ(errorWith({"--jobs"}), jobsMessage);
}

TEST_F(OptionsTest, takeTheNextArgumentAsValueWhateverItLooksLike) {
  const Options options = parseArguments(Arguments{"a.png", "--output", "--json"});
  EXPECT_EQ(options.outputDirectory, FileURL::fromPath("--json"));
  EXPECT_FALSE(options.jsonOutput);
  EXPECT_EQ(errorOf({"--output"}), "--output attend un chemin de dossier");
  EXPECT_EQ(errorOf({"--profile"}), "--profile attend un nom de profil");
  EXPECT_EQ(errorOf({"a", "--profile", "--help"}), "Profil introuvable : --help");
}

TEST_F(OptionsTest, letTheLastOccurrenceWin) {
  const Options options =
      optionsWith({"--quality", "50", "--format", "png", "--jobs", "1", "--quality", "90",
                   "--format", "avif", "--jobs", "2", "--output", "/last"});
  EXPECT_EQ(options.quality, 90);
  EXPECT_EQ(options.format, ImageFormat::avif);
  EXPECT_EQ(options.jobs, 2);
  EXPECT_EQ(options.outputDirectory, FileURL::fromPath("/last"));
}

TEST_F(OptionsTest, refuseWhatBeginsWithTwoDashesAndIsUnknown) {
  for (const std::string typed :
       {"--verbose", "--", "--JSON", "--json=1", "--quality=80", "--create-profile"}) {
    EXPECT_EQ(errorWith({typed}), "Option inconnue : " + typed);
  }
}

TEST_F(OptionsTest, reportTheFirstProblemInArgumentOrder) {
  EXPECT_EQ(errorOf({"--jobs", "0", "--help"}), jobsMessage);
  EXPECT_EQ(errorOf({"--format", "gif", "--quality", "x"}), formatMessage);
  EXPECT_EQ(errorOf({"--quality", "x", "--format", "gif"}), qualityMessage);
}

TEST_F(OptionsTest, needAnInputThenAProfileThenAFolder) {
  const std::string noInput = "Aucun fichier à compresser.";
  EXPECT_EQ(errorOf({}), noInput);
  EXPECT_EQ(errorOf({"--output", "/out"}), noInput);
  EXPECT_EQ(errorOf({"--profile", "Nope"}), noInput);
  EXPECT_EQ(errorOf({"a.png", "--profile", "Nope"}), "Profil introuvable : Nope");
  EXPECT_EQ(errorOf({"a.png"}), "--output <dossier> est obligatoire.");
}

TEST_F(OptionsTest, areFilledInByProfilesBeneathWhatIsExplicit) {
  JSONFileStore::save(
      std::vector<ExportProfile>{
          {.id = UUID::random(),
           .name = "Défaut",
           .format = ImageFormat::webp,
           .quality = 60,
           .destinationFolderURL = FileURL::fromPath("/F").folderURLString(),
           .isDefault = true},
          {.id = UUID::random(), .name = "Web", .format = ImageFormat::png, .quality = 50}},
      JSONFileStore::profilesFilename);
  const Options byDefault = parseArguments(Arguments{"a.png"});
  EXPECT_EQ(byDefault.format, ImageFormat::webp);
  EXPECT_EQ(byDefault.quality, 60);
  EXPECT_EQ(byDefault.outputDirectory, FileURL::fromPath("/F"));

  const Options byName = optionsWith({"--profile", "web", "--quality", "75"});
  EXPECT_EQ(byName.format, ImageFormat::png);
  EXPECT_EQ(byName.quality, 75);
  EXPECT_EQ(byName.outputDirectory, FileURL::fromPath("/out"));

  EXPECT_EQ(errorOf({"a.png", "--profile", "WEB"}), "--output <dossier> est obligatoire.");
}

}  // namespace
}  // namespace orvane
