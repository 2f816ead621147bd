#include "platform/foundation/Files.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "platform/foundation/AtomicFile.h"
#include "platform/foundation/SourceFile.h"

namespace orvane::Files {
namespace {

std::optional<std::string> homeOfPasswordDatabase() {
  std::array<char, 16384> buffer;
  struct passwd entry = {};
  struct passwd* found = nullptr;
  getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found);
  if (found == nullptr || *found->pw_dir == '\0') return std::nullopt;
  return found->pw_dir;
}

std::optional<std::string> homeFolder() {
  const char* home = std::getenv("HOME");
  if (home != nullptr && *home != '\0') return home;
  return homeOfPasswordDatabase();
}

}  // namespace

Bytes readWhole(const std::string& path) { return SourceFile::open(path).readWhole(); }

void writeAtomically(const std::string& path, ByteView bytes) {
  AtomicFile file(path);
  file.write(bytes);
  file.flush();
  file.move();
}

std::optional<std::int64_t> size(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  return status.st_size;
}

bool isFolder(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool createFolders(const std::string& path) {
  std::error_code ignored;
  std::filesystem::create_directories(path, ignored);
  return isFolder(path);
}

std::optional<std::string> applicationSupportFolder() {
#ifdef __APPLE__
  constexpr std::string_view folderInHome = "/Library/Application Support";
#else
  constexpr std::string_view folderInHome = "/.local/share";
  const char* dataHome = std::getenv("XDG_DATA_HOME");
  if (dataHome != nullptr && *dataHome == '/') return dataHome;
#endif
  std::optional<std::string> folder = homeFolder();
  if (folder) folder->append(folderInHome);
  return folder;
}

}  // namespace orvane::Files
