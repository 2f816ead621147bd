#pragma once

#include <sys/types.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "platform/foundation/Descriptor.h"
#include "support/TemporaryFolder.h"

namespace orvane::test {

using orvane::Descriptor;

/// How one run of the program ended, and what it wrote, byte for byte.
struct ToolRun {
  int status = -1;  ///< exit status; -1 when a signal ended the run
  int signal = 0;
  std::string output;
  std::string errors;
  std::size_t errorWrites = 0;  ///< calls of write(2) that `errors` came in
};

/// The other end of the program's standard output.
enum class Output {
  captured,
  reluctant,  ///< captured by a pipe of one page that does not block its writer
  terminal,   ///< captured by a terminal that passes every byte on as it is
  closed,
  full,        ///< a device without room
  readerGone,  ///< a pipe that nobody reads any more
};

/// A run of the program that has been started. `wait` must be called once, for nothing else ends
/// it.
class RunningTool {
 public:
  RunningTool(pid_t process, Descriptor output, Descriptor errors);

  void send(int signal) const;

  /// Reads what the program writes until it ends.
  ToolRun wait();

 private:
  pid_t process_;
  Descriptor output_;
  Descriptor errors_;
};

/// The real program in a folder of its own, with a home of its own and no locale.
class Tool {
 public:
  Tool();

  /// Starts the program in the working folder, be it removed by now. Any number of runs may be
  /// under way at once. Throws std::system_error when it cannot be started.
  RunningTool start(const std::vector<std::string>& arguments,
                    Output output = Output::captured) const;

  /// Starts the program and waits until it ends.
  ToolRun run(const std::vector<std::string>& arguments, Output output = Output::captured) const;

  std::filesystem::path profileFile() const;

  /// Changes to the environment that the tests run in; an empty value takes the variable out.
  std::map<std::string, std::string> environment;

  /// A program that starts the one that is tested, and its arguments, such as prlimit(1).
  std::vector<std::string> launcher;

  TemporaryFolder folder;  ///< the working folder

 private:
  TemporaryFolder home_;
  Descriptor openFolder_;
};

}  // namespace orvane::test
