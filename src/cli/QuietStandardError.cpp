#include "cli/QuietStandardError.h"

#include <fcntl.h>
#include <unistd.h>

namespace orvane {

QuietStandardError::QuietStandardError() : original_(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3)) {
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (original_ != -1 && nowhere != -1) dup2(nowhere, STDERR_FILENO);
  if (nowhere != -1) close(nowhere);
}

QuietStandardError::~QuietStandardError() {
  if (original_ == -1) return;
  dup2(original_, STDERR_FILENO);
  close(original_);
}

}  // namespace orvane
