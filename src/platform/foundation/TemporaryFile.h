#pragma once

#include <string>

#include "platform/foundation/Descriptor.h"

namespace orvane {

/// A hidden name beside a destination, for a file that is to be moved there. A file that has not
/// been moved is removed by the destructor, or when SIGINT, SIGTERM or SIGHUP ends the process.
/// Many objects may live at once, on as many threads.
///
/// The first object of a process installs handlers for those signals, each only if the disposition
/// is the default one. A handler removes the files and lets the signal end the process.
class TemporaryFile {
 public:
  /// Chooses the name. Creates nothing.
  explicit TemporaryFile(std::string destination);

  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::string& path() const { return path_; }

  /// Creates the empty file with the permissions of the regular file at the destination, else 0666
  /// less the umask. Returns it open for writing. Throws FileError, which names the folder.
  Descriptor create();

  /// Moves the file to the destination in one step. It replaces a file or a symbolic link itself,
  /// never a folder. Must be called once. Throws FileError, which names the destination; the
  /// destructor then removes the file.
  void moveToDestination();

 private:
  class ListLock;

  static void installHandlers();
  static void removeAllAndEnd(int signal);

  void delist();

  /// The list of files that a handler removes. One per process, as signal handlers are; accessed
  /// under a ListLock only.
  static TemporaryFile* first_;

  std::string destination_;
  std::string path_;
  bool isMoved_ = false;
  TemporaryFile* next_ = nullptr;
  TemporaryFile* previous_ = nullptr;
};

}  // namespace orvane
