#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/foundation/Bytes.h"

/// Operations on files. Paths are passed to the system byte for byte.
namespace orvane::Files {

/// The whole file (see SourceFile). Throws FileError.
Bytes readWhole(const std::string& path);

/// Writes a temporary file beside `path` and moves it there. A reader sees the whole old file or
/// the whole new one, and a failure leaves nothing behind. The new file has the mode of the one
/// that it replaces, else 0666 less the umask. Throws FileError.
void writeAtomically(const std::string& path, ByteView bytes);

/// Size in bytes, following symbolic links; no value when the file cannot be examined.
std::optional<std::int64_t> size(const std::string& path);

bool isFolder(const std::string& path);

/// Creates the folder and the missing ones above it. Returns whether it exists now.
bool createFolders(const std::string& path);

/// The folder for this user's application data: ~/Library/Application Support on macOS, else
/// XDG_DATA_HOME when absolute, else ~/.local/share (XDG Base Directory Specification). Returns no
/// value when the user has no home folder.
std::optional<std::string> applicationSupportFolder();

}  // namespace orvane::Files
