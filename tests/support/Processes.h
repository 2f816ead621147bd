#pragma once

#include <sys/types.h>

#include <vector>

namespace orvane::test {

/// The processes that `parent` has started and that have not ended.
std::vector<pid_t> childrenOf(pid_t parent);

}  // namespace orvane::test
