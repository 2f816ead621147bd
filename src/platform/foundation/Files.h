#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/foundation/Bytes.h"

/// Paths are opened with their bytes as they are.
namespace orvane::Files {

inline constexpr std::uint64_t maximumReadBytes = std::uint64_t{2} << 30;

/// The whole file: a regular one by its size, anything else until its end. Throws FileError; EFBIG
/// past `maximumReadBytes`.
Bytes readWhole(const std::string& path);

/// Writes a temporary file beside `path` and puts it in its place: a reader sees the old file or
/// the new one, whole, and on failure nothing is left behind. The new file has the mode of the one
/// that it replaces, else 0666 less the umask. Throws FileError.
void writeAtomically(const std::string& path, ByteView bytes);

/// Size in bytes, following symbolic links; nothing when it cannot be told.
std::optional<std::int64_t> size(const std::string& path);

bool isFolder(const std::string& path);

/// Creates the folder and the missing ones above it. Whether it is there now.
bool createFolders(const std::string& path);

/// Where applications keep their data for this user: ~/Library/Application Support on macOS, else
/// XDG_DATA_HOME when absolute, else ~/.local/share (XDG Base Directory Specification). Nothing
/// when the user has no home.
std::optional<std::string> applicationSupportFolder();

}  // namespace orvane::Files
