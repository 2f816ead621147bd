#pragma once

#include "platform/foundation/ProcessTitle.h"
#include "workers/Channel.h"

namespace orvane {

/// The work of a worker process: one job after the other until the channel's other end is gone. The
/// process has given up its other rights by then (see Sandbox).
///
/// A job is answered by `need`, which waits for a `grant`, `decoded` and `done`, or by `failed`
/// anywhere between; `memoryShort` may come at any time. The title is the name of the file in work.
void runWorker(const Channel& channel, const ProcessTitle& title) noexcept;

}  // namespace orvane
