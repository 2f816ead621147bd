#pragma once

#include <string>

#include "platform/foundation/Bytes.h"
#include "platform/foundation/Descriptor.h"
#include "platform/foundation/TemporaryFile.h"

namespace orvane {

/// A file that appears whole under its name, or not at all: it is written beside its destination
/// under another name. Without `move()`, or when that throws, the destructor removes it and the
/// destination is as it was. Used by one thread at a time. Every function throws FileError.
///
/// Many files are flushed in less time where all of them are written first: the first flush then
/// carries what the others need of the file system's journal.
class AtomicFile {
 public:
  /// The new file will have the permissions of the regular file at `path`, else 0666 less the
  /// umask.
  explicit AtomicFile(const std::string& path);

  /// Appends, and lets the system begin to write to the medium.
  void write(ByteView bytes);

  /// Waits until the file is on its medium. Must be called once, after the last `write`.
  void flush();

  /// Moves the file to `path`. It replaces a file or a symbolic link itself, never a folder. Must
  /// be called once, after `flush`.
  void move();

 private:
  TemporaryFile file_;
  Descriptor descriptor_;
};

}  // namespace orvane
