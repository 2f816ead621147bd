#pragma once

#include <cstddef>
#include <functional>

namespace orvane {

/// Calls `work` once for each index below `count`, on the calling thread and on up to `threads` - 1
/// others, fewer where the system refuses them. `thread`, below `threads`, differs between calls
/// that run at the same time. Throws what `work` throws; no more calls are made then.
void inParallel(std::size_t count, int threads,
                const std::function<void(std::size_t index, std::size_t thread)>& work);

/// How many of `wanted` threads the system gives beside those there are. For libraries that hang or
/// fail when a thread is refused.
int startableThreads(int wanted);

}  // namespace orvane
