#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "picture/ImageFormat.h"
#include "platform/foundation/FileURL.h"
#include "platform/foundation/LocalizedError.h"

namespace orvane {

/// The settings of a compression run.
struct Options {
  std::vector<std::string> inputPaths;  ///< as typed, at least one
  double quality;                       ///< perceptual, 1…100
  ImageFormat format;
  FileURL outputDirectory;
  bool jsonOutput;
  std::int64_t jobs;  ///< files in work at once, at least 1
};

/// The command line is wrong.
class CLIError : public LocalizedError {
 public:
  explicit CLIError(std::string description) : LocalizedError(std::move(description)) {}
};

/// Reads the command line, without the program's name. Missing settings come from the stored
/// profiles, then from the defaults. Does not access inputs or the output folder. Throws CLIError
/// at the first problem. "--help" and "-h" print the help and end the process with status 0.
Options parseArguments(std::span<const std::string> arguments);

}  // namespace orvane
