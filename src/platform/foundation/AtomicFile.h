#pragma once

#include <string>

#include "platform/foundation/Bytes.h"
#include "platform/foundation/TemporaryFile.h"

namespace orvane {

/// A file that appears whole under its name, or not at all: it is written beside its destination
/// under another name. Without `commit()`, or where that throws, it is gone in the end and the
/// destination is as it was. One thread's at a time. Every function throws FileError.
class AtomicFile {
 public:
  /// The new file will have the permissions of the regular file at `path`, else 0666 less the
  /// umask.
  explicit AtomicFile(const std::string& path);

  ~AtomicFile();
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;

  /// Appends.
  void write(ByteView bytes);

  /// Puts the file, once it is safe on its medium, in the place of what `path` names: a file, or a
  /// symbolic link itself; never a folder. To be called once, last.
  void commit();

 private:
  TemporaryFile file_;
  int descriptor_;  ///< −1 once closed
};

}  // namespace orvane
