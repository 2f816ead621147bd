#pragma once

#include <string>

#include "platform/foundation/Descriptor.h"

namespace orvane {

/// Lets one process at a time work in a folder, among those that take this lock. It is the system's
/// lock on the folder itself, so it leaves nothing behind and ends with its process. Where it
/// cannot be had, because the folder is missing, the file system has no locks or a holder keeps it
/// for half a minute, work goes on without.
class FolderLock {
 public:
  /// Waits until the folder is free.
  explicit FolderLock(const std::string& folder);

 private:
  Descriptor folder_;  ///< none where it is missing
};

}  // namespace orvane
