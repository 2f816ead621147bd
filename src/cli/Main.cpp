#include <algorithm>
#include <csignal>
#include <exception>
#include <string>
#include <vector>

#include "batch/BatchRunner.h"
#include "cli/Console.h"
#include "cli/Options.h"
#include "cli/QuietStandardError.h"
#include "cli/Reports.h"
#include "cli/Usage.h"
#include "pipeline/ImageCompressor.h"
#include "platform/foundation/FileError.h"
#include "platform/foundation/Files.h"
#include "platform/foundation/LocalizedString.h"
#include "platform/foundation/OpenFiles.h"
#include "platform/foundation/ProcessInfo.h"
#include "platform/foundation/ProcessTitle.h"
#include "platform/foundation/TemporaryNames.h"
#include "profiles/ProfileCommand.h"
#ifdef __linux__
#include "workers/WorkerPool.h"
#endif

namespace orvane {
namespace {

enum ExitStatus { success = 0, failure = 1, usageError = 64 };  // 64: EX_USAGE of sysexits.h

void printFailure(const std::exception& error) {
  Console::printError(std::string("Erreur : ") + error.what() + "\n");
}

ExitStatus runProfileCreation(const std::vector<std::string>& arguments) try {
  Console::print(runProfileCommand(arguments));
  return success;
} catch (const ProfileCommandError& error) {
  Console::printError(error.localizedDescription() + "\n");
  return usageError;
}

/// Worker processes need Linux: its sealed memory above all.
ImageCompressor::CompressSource sourceCompressor([[maybe_unused]] const Options& options,
                                                 [[maybe_unused]] const ProcessTitle& title) {
#ifdef __linux__
  return WorkerPool::sourceCompressor(
      title, {.jobs = options.jobs,
              .files = static_cast<std::int64_t>(options.inputPaths.size()),
              .processors = ProcessInfo::activeProcessorCount()});
#else
  return compressHere;
#endif
}

std::vector<ImageCompressionResult> compressQuietly(const Options& options,
                                                    const ProcessTitle& title) {
  const QuietStandardError quiet;
  const std::string total = "/" + std::to_string(options.inputPaths.size());
  std::size_t finished = 0;
  title.show(std::to_string(finished) + total);
  const auto compress = [source = sourceCompressor(options, title)](const auto&... arguments) {
    return ImageCompressor::compressUncommitted(arguments..., source);
  };
  const auto showProgress = [&](auto&&...) { title.show(std::to_string(++finished) + total); };
  OpenFiles::raiseLimit();
  return compressAll(options.inputPaths, options.outputDirectory, options.format, options.quality,
                     {.jobs = options.jobs, .onResult = showProgress}, compress);
}

ExitStatus runCompression(const std::vector<std::string>& arguments,
                          const ProcessTitle& title) try {
  const Options options = parseArguments(arguments);
  // Failure is ignored: each file then fails on its own when its output is written.
  Files::createFolders(options.outputDirectory.path());
  TemporaryNames::removeLeftovers(options.outputDirectory.path());
  const auto results = compressQuietly(options, title);
  options.jsonOutput ? printJSON(results) : printHumanReadable(results);
  return std::ranges::any_of(results, [](const auto& result) { return result.error.has_value(); })
             ? failure
             : success;
} catch (const CLIError& error) {
  Console::printError("Erreur : " + error.localizedDescription() + "\n\n");
  try {
    printUsage();
  } catch (const FileError& unwritable) {
    printFailure(unwritable);
  }
  return usageError;
}

}  // namespace
}  // namespace orvane

int main(int argc, char** argv) try {
  orvane::LocalizedString::takeUsersLocale();
  std::signal(SIGXFSZ, SIG_IGN);  // only the file that exceeds RLIMIT_FSIZE fails
  orvane::Console::openClosedStreams();
  const std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
  const orvane::ProcessTitle title(argc, argv);
  const bool createsProfile = !arguments.empty() && arguments.front() == "--create-profile";
  return createsProfile ? orvane::runProfileCreation(arguments)
                        : orvane::runCompression(arguments, title);
} catch (const std::exception& error) {
  orvane::printFailure(error);
  return orvane::failure;
}
