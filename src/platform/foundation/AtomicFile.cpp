#include "platform/foundation/AtomicFile.h"

#include <unistd.h>

#include <cerrno>

#include "platform/foundation/FileError.h"

namespace orvane {

AtomicFile::AtomicFile(const std::string& path) : file_(path), descriptor_(file_.create()) {}

void AtomicFile::write(ByteView bytes) { descriptor_.write(bytes); }

void AtomicFile::commit() {
  if (fsync(descriptor_.number()) != 0) throw FileError(errno);
  descriptor_.close();
  file_.moveToDestination();
}

}  // namespace orvane
