#include "platform/foundation/ProcessInfo.h"

#include <algorithm>
#include <thread>

#ifdef __linux__
#include <sched.h>
#endif

namespace orvane::ProcessInfo {

std::int64_t activeProcessorCount() {
#ifdef __linux__
  // Fails on machines with more processors than the set can hold.
  cpu_set_t processors;
  if (sched_getaffinity(0, sizeof processors, &processors) == 0) return CPU_COUNT(&processors);
#endif
  return std::max(1U, std::thread::hardware_concurrency());
}

}  // namespace orvane::ProcessInfo
