#include "cli/Options.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "cli/Usage.h"
#include "platform/foundation/Number.h"
#include "platform/foundation/ProcessInfo.h"
#include "profiles/ExportProfileResolver.h"

namespace orvane {
namespace {

/// The command line as typed, before profiles and defaults fill the gaps.
struct CommandLine {
  std::vector<std::string> inputPaths;
  std::optional<double> quality;
  std::optional<ImageFormat> format;
  std::optional<std::string> output;
  std::optional<std::string> profileName;
  bool json = false;
  std::int64_t jobs = ProcessInfo::activeProcessorCount();
};

// Each of these reads one option's value. It is null when the command line ends before it.

void readQuality(const std::string* value, CommandLine& line) {
  const auto quality = value != nullptr ? Number::parseDouble(*value) : std::nullopt;
  if (!quality) throw CLIError("--quality attend un nombre entre 1 et 100");
  if (!(*quality >= 1 && *quality <= 100)) {
    throw CLIError("--quality doit être entre 1 et 100 (reçu " + Number::description(*quality) +
                   ")");
  }
  line.quality = quality;
}

void readFormat(const std::string* value, CommandLine& line) {
  line.format = value != nullptr ? ImageFormat::fromUserText(*value) : std::nullopt;
  if (!line.format) {
    throw CLIError("--format attend l'une de ces valeurs : " + ImageFormat::joinedRawValues(", "));
  }
}

void readOutput(const std::string* value, CommandLine& line) {
  if (value == nullptr) throw CLIError("--output attend un chemin de dossier");
  line.output = *value;
}

void readProfile(const std::string* value, CommandLine& line) {
  if (value == nullptr) throw CLIError("--profile attend un nom de profil");
  line.profileName = *value;
}

void readJobs(const std::string* value, CommandLine& line) {
  const auto jobs = value != nullptr ? Number::parseInteger(*value) : std::nullopt;
  if (!jobs || *jobs < 1) throw CLIError("--jobs attend un entier positif");
  line.jobs = *jobs;
}

struct ValueOption {
  std::string_view name;
  void (*read)(const std::string* value, CommandLine& line);
};

constexpr std::array<ValueOption, 5> valueOptions{{
    {"--quality", readQuality},
    {"--format", readFormat},
    {"--output", readOutput},
    {"--profile", readProfile},
    {"--jobs", readJobs},
}};

[[noreturn]] void showHelp() {
  printUsage();
  std::exit(EXIT_SUCCESS);
}

void readArgumentWithoutValue(const std::string& argument, CommandLine& line) {
  if (argument == "--json") {
    line.json = true;
  } else if (argument == "--help" || argument == "-h") {
    showHelp();
  } else if (argument.starts_with("--")) {
    throw CLIError("Option inconnue : " + argument);
  } else {
    line.inputPaths.push_back(argument);
  }
}

CommandLine read(std::span<const std::string> arguments) {
  CommandLine line;
  for (std::size_t at = 0; at < arguments.size(); ++at) {
    const auto option = std::ranges::find(valueOptions, arguments[at], &ValueOption::name);
    if (option == valueOptions.end()) {
      readArgumentWithoutValue(arguments[at], line);
    } else {
      ++at;
      option->read(at < arguments.size() ? &arguments[at] : nullptr, line);
    }
  }
  return line;
}

ExportProfileResolver::Resolution resolve(const CommandLine& line) try {
  const auto folder = line.output ? std::optional(FileURL::fromPath(*line.output)) : std::nullopt;
  return ExportProfileResolver::resolve(line.profileName, line.quality, line.format, folder);
} catch (const ProfileNotFoundError& error) {
  throw CLIError(error.localizedDescription());
}

}  // namespace

Options parseArguments(std::span<const std::string> arguments) {
  CommandLine line = read(arguments);
  if (line.inputPaths.empty()) throw CLIError("Aucun fichier à compresser.");
  auto resolution = resolve(line);
  if (!resolution.outputDirectory) throw CLIError("--output <dossier> est obligatoire.");
  return {.inputPaths = std::move(line.inputPaths),
          .quality = resolution.quality,
          .format = resolution.format,
          .outputDirectory = *std::move(resolution.outputDirectory),
          .jsonOutput = line.json,
          .jobs = line.jobs};
}

}  // namespace orvane
