#include "platform/foundation/OpenFiles.h"

#include <sys/resource.h>

#include <algorithm>
#include <limits>

namespace orvane::OpenFiles {

std::int64_t raiseLimit() {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
  getrlimit(RLIMIT_NOFILE, &limit);
  constexpr rlim_t most = std::numeric_limits<std::int32_t>::max();  // more is no limit
  return static_cast<std::int64_t>(std::min(limit.rlim_cur, most));
}

}  // namespace orvane::OpenFiles
