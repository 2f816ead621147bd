#include "cli/Console.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>

#include "platform/foundation/FileError.h"
#include "platform/foundation/Text.h"

namespace orvane::Console {
namespace {

/// Waits until `descriptor` can be written to: another process that shares it may have made it
/// non-blocking.
void waitForRoom(int descriptor) {
  pollfd waiting{.fd = descriptor, .events = POLLOUT, .revents = 0};
  poll(&waiting, 1, -1);
}

/// Returns the number of the error that ended the writing, else 0.
int write(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      waitForRoom(descriptor);
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

}  // namespace

void openClosedStreams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // open() takes the lowest free number. That is `descriptor`, for all lower ones are in use.
    if (fcntl(descriptor, F_GETFD) == -1) static_cast<void>(open("/dev/null", O_RDWR));
  }
}

void print(std::string_view text) {
  const int error = write(STDOUT_FILENO, Text::wellFormed(text) + "\n");
  if (error != 0) throw FileError(error);
}

bool printsToTerminal() { return isatty(STDOUT_FILENO) == 1; }

void printError(std::string_view text) { write(STDERR_FILENO, Text::wellFormed(text)); }

}  // namespace orvane::Console
