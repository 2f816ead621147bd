#include "platform/foundation/AtomicFile.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/foundation/FileError.h"

namespace orvane {

AtomicFile::AtomicFile(const std::string& path) : file_(path), descriptor_(file_.create()) {}

AtomicFile::~AtomicFile() {
  if (descriptor_ >= 0) close(descriptor_);
}

void AtomicFile::write(ByteView bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throw FileError(errno);
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
}

void AtomicFile::commit() {
  if (fsync(descriptor_) != 0) throw FileError(errno);
  if (close(std::exchange(descriptor_, -1)) != 0) throw FileError(errno);
  file_.moveToDestination();
}

}  // namespace orvane
