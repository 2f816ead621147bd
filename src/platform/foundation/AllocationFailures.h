#pragma once

/// Allocations that failed in this process, whoever asked for them. Codec libraries go on without
/// the memory, or report an error that does not tell the reason.
namespace orvane::AllocationFailures {

/// Calls `react` at each failure from now on, on the thread that asked; null ends it. `react` must
/// not allocate. Failures are seen with the GNU C library, but not under sanitizers.
void watch(void (*react)());

/// Tells of a failure that was seen otherwise.
void report();

}  // namespace orvane::AllocationFailures
