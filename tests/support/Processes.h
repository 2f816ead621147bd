#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace orvane::test {

/// The processes that `parent` has started and that have not ended.
std::vector<pid_t> childrenOf(pid_t parent);

/// The name of a process, which ps shows as "comm".
std::string nameOf(pid_t process);

}  // namespace orvane::test
