#pragma once

/// The rights of a worker process.
namespace orvane::Sandbox {

/// Gives up, for good, all that decoding and encoding do not need: opening files, sockets, other
/// programs, core dumps. The process also ends with its parent. Each means is used as far as the
/// kernel has it (Linux: Landlock, seccomp); elsewhere, and in builds with sanitizers, nothing
/// happens. To be called while the
/// process has one thread.
void enter();

}  // namespace orvane::Sandbox
