// The profile file as other programs, and users of several kinds, leave and find it.

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <set>
#include <thread>

#include "profiles/ExportProfileJSON.h"
#include "support/RunTool.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;
using test::readFile;

std::string repeated(std::string_view text, std::size_t count) {
  std::string result;
  for (std::size_t i = 0; i < count; ++i) result += text;
  return result;
}

TEST(SharedProfileFile, isWholeWheneverItIsRead) {
  const test::Tool tool;
  // One name in two spellings, composed and not, makes a file of two sizes: one that is written in
  // place would be seen cut or mixed.
  const std::string shortName = repeated("\u00e9", 10'000);
  const std::string longName = repeated("e\u0301", 10'000);
  const auto save = [&](const std::string& name) {
    return tool.run({"--create-profile", name, "--format", "png", "--quality", "80"}).status;
  };
  ASSERT_EQ(save(shortName), 0);

  std::atomic<bool> ended = false;
  std::thread writer([&] {
    for (int i = 0; i < 20; ++i) EXPECT_EQ(save(i % 2 == 0 ? longName : shortName), 0);
    ended = true;
  });
  std::size_t shortReads = 0, longReads = 0, brokenReads = 0;
  while (!ended) {
    const auto profiles = ExportProfileJSON::decode(readFile(tool.profileFile()));
    const std::string name = profiles && profiles->size() == 1 ? profiles->front().name : "";
    ++(name == shortName ? shortReads : name == longName ? longReads : brokenReads);
  }
  writer.join();
  EXPECT_EQ(brokenReads, 0u);
  EXPECT_GT(shortReads + longReads, 0u);
}

TEST(SharedProfileFile, keepsTheProfilesOfAllWritersThatRunAtTheSameTime) {
  const test::Tool tool;
  std::vector<test::RunningTool> writers;
  std::set<std::string> names;
  for (int i = 0; i < 40; ++i) {
    const std::string name = *names.insert("profile " + std::to_string(i)).first;
    writers.push_back(tool.start({"--create-profile", name, "--format", "png", "--quality", "80"}));
  }
  for (test::RunningTool& writer : writers) EXPECT_EQ(writer.wait().status, 0);
  const auto profiles = ExportProfileJSON::decode(readFile(tool.profileFile()));
  ASSERT_TRUE(profiles);
  std::set<std::string> kept;
  for (const ExportProfile& profile : *profiles) kept.insert(profile.name);
  EXPECT_EQ(kept, names);
  const auto entries = fs::directory_iterator(tool.profileFile().parent_path());
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 1);
}

TEST(SharedProfileFile, keepsItsMode) {
  const test::Tool tool;
  const std::vector<std::string> command{"--create-profile", "Web", "--format", "png",
                                         "--quality",        "80"};
  tool.run(command);
  const auto mode = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read;
  fs::permissions(tool.profileFile(), mode);
  tool.run(command);
  EXPECT_EQ(fs::status(tool.profileFile()).permissions(), mode);
}

TEST(SharedProfileFile, staysASymbolicLink) {
  const test::Tool tool;
  const fs::path file = tool.profileFile();
  fs::create_directories(file.parent_path());
  fs::create_symlink(tool.folder / "middle", file);
  fs::create_symlink("shared.json", tool.folder / "middle");
  // The file behind the links is missing at first.
  for (std::size_t count = 1; count <= 2; ++count) {
    tool.run({"--create-profile", std::to_string(count), "--format", "png", "--quality", "80"});
    EXPECT_TRUE(fs::is_symlink(file));
    EXPECT_TRUE(fs::is_symlink(tool.folder / "middle"));
    EXPECT_TRUE(fs::is_regular_file(tool.folder / "shared.json"));
    EXPECT_EQ(ExportProfileJSON::decode(readFile(file)).value().size(), count);
  }
  EXPECT_EQ(tool.folder.names(), (std::vector<std::string>{"middle", "shared.json"}));
}

/// Runs the program with both of its streams on standard error.
[[noreturn]] void runAsNobodyKnown(std::vector<std::string> arguments) {
  unsetenv("HOME");
  unsetenv("XDG_DATA_HOME");
  // The program may lie where that user cannot go, so it is opened before.
  FILE* const program = std::fopen(ORVANE_CLI, "rb");
  if (program == nullptr || setuid(3'999'999'999) != 0) std::exit(2);
  dup2(STDERR_FILENO, STDOUT_FILENO);
  arguments.insert(arguments.begin(), "orvane-cli");
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  fexecve(fileno(program), pointers.data(), environ);
  std::exit(3);
}

TEST(SharedProfileFileDeathTest, hasNoPlaceWithAUserWithoutAHome) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser can become an unknown user";
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::vector<std::vector<std::string>> commands{
      {"--create-profile", "A", "--format", "png", "--quality", "1"},
      {"a.png", "--output", "/nowhere/out", "--json"},
  };
  for (const auto& command : commands) {
    EXPECT_EXIT(runAsNobodyKnown(command), testing::ExitedWithCode(1),
                "^Erreur : Dossier des données d'application introuvable\\.\n$");
  }
}

}  // namespace
}  // namespace orvane
