#include "platform/foundation/TemporaryNames.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <regex>

#include "support/TemporaryFolder.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

/// A name of this process, taken apart at its hyphens; the boot and the UUID are whole.
struct Parts {
  std::string boot, pidNamespace, process, start, uuid;

  Parts() {
    const std::regex form(R"(\.orvane-(.{36})-(\d+)-(\d+)-(\d+)-(.{36}))");
    std::smatch match;
    const std::string name = TemporaryNames::unique();
    EXPECT_TRUE(std::regex_match(name, match, form)) << name;
    boot = match[1], pidNamespace = match[2], process = match[3], start = match[4], uuid = match[5];
  }

  std::string name() const {
    return ".orvane-" + boot + "-" + pidNamespace + "-" + process + "-" + start + "-" + uuid;
  }
};

/// The number of a process that has ended.
std::string endedProcess() {
  const pid_t child = fork();
  if (child == 0) _exit(0);
  EXPECT_EQ(waitpid(child, nullptr, 0), child);
  return std::to_string(child);
}

struct TemporaryNamesTest : testing::Test {
  test::TemporaryFolder folder;

  /// The names that stay in a folder with these files.
  Names staying(const Names& names) const {
    for (const std::string& name : names) test::writeFile(folder / name, "");
    TemporaryNames::removeLeftovers(folder.path());
    return folder.names();
  }

  /// Makes a file of another boot, last changed so long before now.
  std::string ofAnotherBoot(std::chrono::seconds age) const {
    Parts parts;
    parts.boot = "01234567-89ab-cdef-0123-456789abcdef";
    const std::string name = parts.name();
    test::writeFile(folder / name, "");
    fs::last_write_time(folder / name, fs::file_time_type::clock::now() - age);
    return name;
  }
};

TEST_F(TemporaryNamesTest, areHiddenAndUnique) {
  const std::string name = TemporaryNames::unique();
  EXPECT_TRUE(name.starts_with('.'));
  EXPECT_NE(name, TemporaryNames::unique());
  EXPECT_LE(name.size(), 143u);  // the longest that eCryptfs takes
}

TEST_F(TemporaryNamesTest, ofLivingProcessesStay) {
  const Names own{TemporaryNames::unique()};
  EXPECT_EQ(staying(own), own);
}

TEST_F(TemporaryNamesTest, ofAProcessThatHasEndedGo) {
  Parts parts;
  parts.process = endedProcess();
  EXPECT_EQ(staying({parts.name()}), Names{});
}

TEST_F(TemporaryNamesTest, ofAnEarlierProcessOfTheSameNumberGo) {
  Parts parts;
  parts.start += "0";
  EXPECT_EQ(staying({parts.name()}), Names{});
}

TEST_F(TemporaryNamesTest, ofAnotherPIDNamespaceStay) {
  Parts parts;
  parts.process = endedProcess();
  parts.pidNamespace += "0";
  EXPECT_EQ(staying({parts.name()}), Names{parts.name()});
}

TEST_F(TemporaryNamesTest, ofAnEarlierBootGo) {
  ofAnotherBoot(std::chrono::years(1));
  TemporaryNames::removeLeftovers(folder.path());
  EXPECT_EQ(folder.names(), Names{});
}

TEST_F(TemporaryNamesTest, ofAnotherMachineStay) {
  const std::string name = ofAnotherBoot(std::chrono::seconds(0));
  TemporaryNames::removeLeftovers(folder.path());
  EXPECT_EQ(folder.names(), Names{name});
}

TEST_F(TemporaryNamesTest, ofAnyOtherFormStay) {
  Parts parts;
  parts.process = endedProcess();
  const std::string leftover = parts.name();
  const Names others{
      ".orvane-" + parts.uuid,
      leftover + "x",
      leftover.substr(0, leftover.size() - 1),
      "." + leftover,
      leftover.substr(1),
      ".orvane-" + parts.boot + "-" + parts.pidNamespace + "-0-1-" + parts.uuid,
      ".orvane-" + parts.boot + "-" + parts.pidNamespace + "-99999999999999999999-1-" + parts.uuid};
  Names sorted = others;
  std::ranges::sort(sorted);
  EXPECT_EQ(staying(others), sorted);
}

TEST_F(TemporaryNamesTest, ofFoldersStay) {
  Parts parts;
  parts.process = endedProcess();
  fs::create_directory(folder / parts.name());
  EXPECT_EQ(staying({}), Names{parts.name()});
}

TEST_F(TemporaryNamesTest, areNotLookedForWhereThereIsNoFolder) {
  EXPECT_NO_THROW(TemporaryNames::removeLeftovers(folder / "missing"));
  EXPECT_NO_THROW(TemporaryNames::removeLeftovers(""));
}

}  // namespace
}  // namespace orvane
