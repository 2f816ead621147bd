#pragma once

#include <string_view>

/// The process's two output streams. Bytes that are not UTF-8 are shown as U+FFFD. A stream that
/// cannot be written to is no error: the exit status says what became of the run. Only a pipe that
/// nobody reads any more ends the process, by SIGPIPE.
namespace orvane::Console {

/// Gives each of the three standard streams that is closed to /dev/null, so that no file which is
/// opened later takes its number and receives what is meant for it. To be called before any
/// file is opened.
void openClosedStreams();

/// One line, or several, on standard output; the last newline is added here.
void print(std::string_view text);

/// `text` as it is on standard error, in one write.
void printError(std::string_view text);

}  // namespace orvane::Console
