#include "cli/QuietStandardError.h"

#include <fcntl.h>
#include <unistd.h>

namespace orvane {

QuietStandardError::QuietStandardError() : original_(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3)) {
  const Descriptor nowhere(open("/dev/null", O_WRONLY | O_CLOEXEC));
  if (original_ && nowhere) dup2(nowhere.number(), STDERR_FILENO);
}

QuietStandardError::~QuietStandardError() {
  if (original_) dup2(original_.number(), STDERR_FILENO);
}

}  // namespace orvane
