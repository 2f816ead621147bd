#include "platform/foundation/Files.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <string_view>
#include <system_error>

#include "platform/foundation/AtomicFile.h"
#include "platform/foundation/FileError.h"

namespace orvane::Files {
namespace {

class OpenFile {
 public:
  explicit OpenFile(const std::string& path)
      : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (descriptor_ < 0) throw FileError(errno);
  }
  ~OpenFile() { close(descriptor_); }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  /// Size of a regular file in bytes; 0 for anything else, such as a pipe.
  std::uint64_t knownSize() const {
    struct stat status = {};
    if (fstat(descriptor_, &status) != 0) throw FileError(errno);
    return S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
  }

  /// Reads into `bytes` from `at` on, until it is full or the file ends. Returns the end of the
  /// bytes read.
  std::size_t fill(Bytes& bytes, std::size_t at) const {
    while (at < bytes.size()) {
      const ssize_t count = read(descriptor_, bytes.data() + at, bytes.size() - at);
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) throw FileError(errno);
      if (count == 0) break;
      at += static_cast<std::size_t>(count);
    }
    return at;
  }

 private:
  int descriptor_;
};

/// Reads until the end of the file. The buffer doubles, up to one byte past the maximum.
std::size_t fillToTheEnd(const OpenFile& file, Bytes& bytes) {
  constexpr std::size_t firstStep = 65536;
  std::size_t filled = 0;
  do {
    bytes.resize(std::clamp<std::size_t>(bytes.size() * 2, firstStep, maximumReadBytes + 1));
    filled = file.fill(bytes, filled);
    if (filled > maximumReadBytes) throw FileError(EFBIG);
  } while (filled == bytes.size());
  return filled;
}

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

Bytes readWhole(const std::string& path) try {
  const OpenFile file(path);
  const std::uint64_t size = file.knownSize();
  if (size > maximumReadBytes) throw FileError(EFBIG);
  Bytes bytes(size);
  // Files below /proc have size 0 and yet hold bytes.
  bytes.resize(size > 0 ? file.fill(bytes, 0) : fillToTheEnd(file, bytes));
  return bytes;
} catch (const std::bad_alloc&) {
  throw FileError(ENOMEM);
}

void writeAtomically(const std::string& path, ByteView bytes) {
  AtomicFile file(path);
  file.write(bytes);
  file.commit();
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
