#pragma once

#include <string>

/// Names of temporary files. A name tells which process made it: the boot, the PID namespace, the
/// process's number and its start time. The last tells it from a later process of the same number.
namespace orvane::TemporaryNames {

/// A hidden name that no other file has. Without /proc it tells nothing.
std::string unique();

/// Removes the files in `folder` whose names `unique` made in a process that has ended. Files of a
/// process that cannot be looked up stay: one in another PID namespace of this boot, and one of
/// another boot whose file has changed since this boot began, for another machine may share the
/// folder. Failures are ignored.
void removeLeftovers(const std::string& folder);

}  // namespace orvane::TemporaryNames
