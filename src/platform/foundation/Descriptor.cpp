#include "platform/foundation/Descriptor.h"

#include <cerrno>

#include "platform/foundation/FileError.h"

namespace orvane {

void Descriptor::write(ByteView bytes) const {
  while (!bytes.empty()) {
    const ssize_t written = ::write(number_, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throw FileError(errno);
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
}

void Descriptor::close() {
  if (::close(std::exchange(number_, -1)) != 0) throw FileError(errno);
}

}  // namespace orvane
