#include "platform/foundation/FolderLock.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>

namespace orvane {
namespace {

/// A holder that was stopped must not stop others for ever. It needs some milliseconds, so hundreds
/// of them get their turn.
constexpr std::chrono::seconds longestWait{30};
constexpr int millisecondsBetweenAttempts = 5;

bool isHeldByAnother(int descriptor) {
  return flock(descriptor, LOCK_EX | LOCK_NB) != 0 && (errno == EWOULDBLOCK || errno == EINTR);
}

}  // namespace

FolderLock::FolderLock(const std::string& folder)
    : folder_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  const auto end = std::chrono::steady_clock::now() + longestWait;
  while (isHeldByAnother(folder_.number()) && std::chrono::steady_clock::now() < end) {
    poll(nullptr, 0, millisecondsBetweenAttempts);
  }
}

}  // namespace orvane
