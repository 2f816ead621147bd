#pragma once

#include <string_view>

/// The process's two output streams. Bytes that are not UTF-8 are shown as U+FFFD. A pipe without a
/// reader ends the process by SIGPIPE.
namespace orvane::Console {

/// Opens /dev/null in the place of each standard stream that is closed. Otherwise a file opened
/// later would get the stream's number, and its output. Must be called before any file is opened.
void openClosedStreams();

/// Writes `text` and a newline to standard output. Throws FileError.
void print(std::string_view text);

/// Whether standard output is a terminal, which obeys control characters.
bool printsToTerminal();

/// Writes `text` to standard error, in one write. Ignores failures, for they cannot be told.
void printError(std::string_view text);

}  // namespace orvane::Console
