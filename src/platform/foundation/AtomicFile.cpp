#include "platform/foundation/AtomicFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/foundation/FileError.h"

namespace orvane {

AtomicFile::AtomicFile(const std::string& path) : file_(path), descriptor_(file_.create()) {}

void AtomicFile::write(ByteView bytes) {
  descriptor_.write(bytes);
#ifdef __linux__
  sync_file_range(descriptor_.number(), 0, 0, SYNC_FILE_RANGE_WRITE);
#endif
}

void AtomicFile::flush() {
  if (fsync(descriptor_.number()) != 0) throw FileError(errno);
  descriptor_.close();
}

void AtomicFile::move() { file_.moveToDestination(); }

}  // namespace orvane
