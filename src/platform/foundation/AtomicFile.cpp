#include "platform/foundation/AtomicFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/foundation/FileError.h"

namespace orvane {
namespace {

constexpr mode_t defaultPermissions = 0666;

/// Of the file behind a symbolic link, for those of a link say nothing.
std::optional<mode_t> permissionsOfRegularFile(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return status.st_mode & 0777;
}

}  // namespace

AtomicFile::AtomicFile(const std::string& path)
    : AtomicFile(path, permissionsOfRegularFile(path)) {}

AtomicFile::AtomicFile(const std::string& path, std::optional<mode_t> formerPermissions)
    : path_(path), file_(path, formerPermissions.value_or(defaultPermissions)) {
  // What the umask took away. Not an error where the file system keeps no permissions.
  if (formerPermissions) fchmod(file_.descriptor(), *formerPermissions);
}

void AtomicFile::write(ByteView bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(file_.descriptor(), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throw FileError(errno);
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
}

void AtomicFile::commit() {
  if (fsync(file_.descriptor()) != 0) throw FileError(errno);
  file_.moveTo(path_);
}

}  // namespace orvane
