// Any command line, its arguments separated by NULs, is understood or refused.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "cli/Options.h"
#include "profiles/JSONFileStore.h"

namespace {

std::vector<std::string> split(std::string_view text) {
  std::vector<std::string> arguments;
  while (!text.empty()) {
    const std::size_t length = std::min(text.find('\0'), text.size());
    arguments.emplace_back(text.substr(0, length));
    text.remove_prefix(std::min(length + 1, text.size()));
  }
  return arguments;
}

/// Help ends the process.
bool asksForHelp(const std::vector<std::string>& arguments) {
  constexpr std::array<std::string_view, 2> options{"--help", "-h"};
  return std::ranges::find_first_of(arguments, options) != arguments.end();
}

bool areUsable(const orvane::Options& options) {
  return !options.inputPaths.empty() && options.quality >= 1 && options.quality <= 100 &&
         options.jobs >= 1;
}

}  // namespace

/// Stores a profile for "--profile" beside the program.
extern "C" int LLVMFuzzerInitialize(int*, char*** arguments) {
  const auto program = std::filesystem::absolute((*arguments)[0]);
  setenv("XDG_DATA_HOME", (program.parent_path() / "options-data").c_str(), 1);
  const orvane::ExportProfile profile{.id = orvane::UUID::random(),
                                      .name = "Web",
                                      .format = orvane::ImageFormat::webp,
                                      .quality = 62.5,
                                      .destinationFolderURL = "file:///tmp/"};
  orvane::JSONFileStore::save({&profile, 1}, orvane::JSONFileStore::profilesFilename);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) try {
  const std::vector<std::string> arguments = split({data, size});
  if (asksForHelp(arguments)) return 0;
  if (!areUsable(orvane::parseArguments(arguments))) std::abort();
  return 0;
} catch (const orvane::CLIError&) {
  return 0;
}
