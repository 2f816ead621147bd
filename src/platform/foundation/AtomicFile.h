#pragma once

#include <string>

#include "platform/foundation/Bytes.h"
#include "platform/foundation/Descriptor.h"
#include "platform/foundation/TemporaryFile.h"

namespace orvane {

/// A file that appears whole under its name, or not at all: it is written beside its destination
/// under another name. Without `commit()`, or when that throws, the destructor removes it and the
/// destination is as it was. Used by one thread at a time. Every function throws FileError.
class AtomicFile {
 public:
  /// The new file will have the permissions of the regular file at `path`, else 0666 less the
  /// umask.
  explicit AtomicFile(const std::string& path);

  /// Appends.
  void write(ByteView bytes);

  /// Flushes the file to its medium, then moves it to `path`. It replaces a file or a symbolic link
  /// itself, never a folder. Must be called once, last.
  void commit();

 private:
  TemporaryFile file_;
  Descriptor descriptor_;
};

}  // namespace orvane
