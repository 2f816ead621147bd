#pragma once

#include <sys/types.h>

#include <string>

namespace orvane {

/// A new, empty file with a hidden name, open for writing. It goes with its owner, or when SIGINT,
/// SIGTERM or SIGHUP ends the process, unless it has been moved into place before. Many may live at
/// once, on as many threads.
///
/// The first one of a process installs handlers for those signals, each only where the disposition
/// is the default one. A handler takes the files away and lets the signal end the process.
class TemporaryFile {
 public:
  /// Creates it in the folder of `path`, with the permissions `mode` less the umask. Throws
  /// FileError, which names the folder.
  TemporaryFile(const std::string& path, mode_t mode);

  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  int descriptor() const { return descriptor_; }

  /// Closes the file and gives it the name `path`, in one step for whoever looks there; what had
  /// that name is gone. To be called once. Throws FileError, and the file then still goes with its
  /// owner; when nothing could be moved to `path`, the error names it.
  void moveTo(const std::string& path);

 private:
  class ListLock;

  static void installHandlers();
  static void removeAllAndEnd(int signal);

  void enlist();
  void delist();

  /// The files that a signal takes away. Of the whole process, as signal handlers are; touched
  /// under a ListLock only.
  static TemporaryFile* first_;

  std::string path_;
  int descriptor_ = -1;  ///< -1 once closed
  bool isMoved_ = false;
  TemporaryFile* next_ = nullptr;
  TemporaryFile* previous_ = nullptr;
};

}  // namespace orvane
