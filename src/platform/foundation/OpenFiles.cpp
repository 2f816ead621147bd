#include "platform/foundation/OpenFiles.h"

#include <sys/resource.h>

#include <algorithm>
#include <limits>

namespace orvane::OpenFiles {

std::int64_t limit() {
  rlimit limits{};
  getrlimit(RLIMIT_NOFILE, &limits);
  constexpr rlim_t most = std::numeric_limits<std::int32_t>::max();  // more is no limit
  return static_cast<std::int64_t>(std::min(limits.rlim_cur, most));
}

void raiseLimit() {
  rlimit limits{};
  getrlimit(RLIMIT_NOFILE, &limits);
  limits.rlim_cur = limits.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limits);
}

}  // namespace orvane::OpenFiles
