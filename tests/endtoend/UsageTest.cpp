// The help, and the messages of usage errors.

#include "cli/Usage.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <cerrno>
#include <cstring>

#include "platform/foundation/ProcessInfo.h"
#include "support/FrenchLocale.h"
#include "support/RunTool.h"

namespace orvane {
namespace {

using Arguments = std::vector<std::string>;

std::string wholeHelp() { return usageText(ProcessInfo::activeProcessorCount()) + "\n"; }

struct UsageEndToEnd : testing::Test {
  test::Tool tool;

  void expectUsageError(const Arguments& arguments, const std::string& description) {
    const test::ToolRun run = tool.run(arguments);
    EXPECT_EQ(run.status, 64);
    EXPECT_EQ(run.errors, "Erreur : " + description + "\n\n");
    EXPECT_EQ(run.errorWrites, 1u);
    EXPECT_EQ(run.output, wholeHelp());
    EXPECT_EQ(tool.folder.names(), Arguments());
  }

  void expectHelp(const Arguments& arguments) {
    const test::ToolRun run = tool.run(arguments);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.output, wholeHelp());
  }
};

TEST_F(UsageEndToEnd, helpIsPrintedOnRequest) {
  expectHelp({"--help"});
  expectHelp({"-h"});
  expectHelp({"a.png", "--output", "out", "--help", "--jobs", "0"});
  EXPECT_EQ(tool.folder.names(), Arguments());
}

TEST_F(UsageEndToEnd, anErrorBeforeTheRequestForHelpWins) {
  expectUsageError({"--jobs", "0", "--help"}, "--jobs attend un entier positif");
}

TEST_F(UsageEndToEnd, anInputIsNeeded) {
  expectUsageError({}, "Aucun fichier à compresser.");
  expectUsageError({"--output", "out", "--profile", "Nope"}, "Aucun fichier à compresser.");
}

TEST_F(UsageEndToEnd, qualityIsANumberFrom1To100) {
  const std::string noNumber = "--quality attend un nombre entre 1 et 100";
  expectUsageError({"a.png", "--quality"}, noNumber);
  expectUsageError({"a.png", "--quality", "abc"}, noNumber);
  expectUsageError({"a.png", "--quality", " 80"}, noNumber);
  expectUsageError({"a.png", "--quality", "80%"}, noNumber);
  expectUsageError({"--quality", "0"}, "--quality doit être entre 1 et 100 (reçu 0.0)");
  expectUsageError({"--quality", "101"}, "--quality doit être entre 1 et 100 (reçu 101.0)");
  expectUsageError({"--quality", "100.5"}, "--quality doit être entre 1 et 100 (reçu 100.5)");
  expectUsageError({"--quality", "nan"}, "--quality doit être entre 1 et 100 (reçu nan)");
  for (const std::string accepted : {"1", "100"}) {
    expectUsageError({"a.png", "--quality", accepted}, "--output <dossier> est obligatoire.");
  }
}

TEST_F(UsageEndToEnd, numbersAreReadAndWrittenInTheCLocale) {
  const test::FrenchLocale locale("UTF-8");
  if (!locale.exists()) GTEST_SKIP() << "no French locale can be compiled here";
  tool.environment["LOCPATH"] = locale.locpath();
  tool.environment["LC_ALL"] = locale.name();
  expectUsageError({"--quality", "100.5"}, "--quality doit être entre 1 et 100 (reçu 100.5)");
  expectUsageError({"--quality", "8,5"}, "--quality attend un nombre entre 1 et 100");
}

TEST_F(UsageEndToEnd, formatIsOneOfSix) {
  const std::string list =
      "--format attend l'une de ces valeurs : png, jpeg, heic, avif, webp, jxl";
  for (const std::string refused : {"jpg", "jpeg-xl", "tiff", ""}) {
    expectUsageError({"a.png", "--format", refused}, list);
  }
  expectUsageError({"a.png", "--format"}, list);
  expectUsageError({"a.png", "--format", "JPEG"}, "--output <dossier> est obligatoire.");
}

TEST_F(UsageEndToEnd, jobsIsAPositiveWholeNumber) {
  for (const std::string refused : {"0", "-2", "1.5", "x"}) {
    expectUsageError({"a.png", "--jobs", refused}, "--jobs attend un entier positif");
  }
  expectUsageError({"a.png", "--jobs"}, "--jobs attend un entier positif");
  expectUsageError({"a.png", "--jobs", "+3"}, "--output <dossier> est obligatoire.");
}

TEST_F(UsageEndToEnd, outputAndProfileNeedAValue) {
  expectUsageError({"a.png", "--output"}, "--output attend un chemin de dossier");
  expectUsageError({"a.png", "--profile"}, "--profile attend un nom de profil");
}

TEST_F(UsageEndToEnd, aFolderIsNeeded) {
  expectUsageError({"a.png"}, "--output <dossier> est obligatoire.");
  expectUsageError({"-v"}, "--output <dossier> est obligatoire.");
  expectUsageError({"-"}, "--output <dossier> est obligatoire.");
}

TEST_F(UsageEndToEnd, unknownOptionsAreNamed) {
  expectUsageError({"--verbose"}, "Option inconnue : --verbose");
  expectUsageError({"--"}, "Option inconnue : --");
  expectUsageError({"a.png", "--create-profile", "Web"}, "Option inconnue : --create-profile");
  expectUsageError({"--CREATE-PROFILE", "Web"}, "Option inconnue : --CREATE-PROFILE");
  expectUsageError({"--caf\xE9"}, "Option inconnue : --caf\uFFFD");
}

TEST_F(UsageEndToEnd, anUnknownProfileIsNamedBeforeAnyFileIsTouched) {
  expectUsageError({"a.png", "--output", "out", "--profile", "Nope"}, "Profil introuvable : Nope");
  expectUsageError({"a.png", "--profile", "--json"}, "Profil introuvable : --json");
}

TEST_F(UsageEndToEnd, aClosedStandardOutputIsNoError) {
  using test::Output;
  EXPECT_EQ(tool.run({"--help"}, Output::closed).status, 0);
  const test::ToolRun run = tool.run({}, Output::closed);
  EXPECT_EQ(run.status, 64);
  EXPECT_EQ(run.errors, "Erreur : Aucun fichier à compresser.\n\n");
}

TEST_F(UsageEndToEnd, theReasonIsToldWhereTheHelpCannotBeWritten) {
  const std::string reason = "Erreur : " + std::string(std::strerror(ENOSPC)) + "\n";
  const test::ToolRun asked = tool.run({"--help"}, test::Output::full);
  EXPECT_EQ(asked.status, 1);
  EXPECT_EQ(asked.errors, reason);
  const test::ToolRun misused = tool.run({}, test::Output::full);
  EXPECT_EQ(misused.status, 64);
  EXPECT_EQ(misused.errors, "Erreur : Aucun fichier à compresser.\n\n" + reason);
}

TEST_F(UsageEndToEnd, aReaderThatLeavesEndsTheProgramAsAnyOther) {
  EXPECT_EQ(tool.run({"--help"}, test::Output::readerGone).signal, SIGPIPE);
}

}  // namespace
}  // namespace orvane
