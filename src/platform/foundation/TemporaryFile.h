#pragma once

#include <string>

namespace orvane {

/// A hidden name beside a destination, under which a file waits to take the destination's place.
/// The file goes with the owner of the name, or when SIGINT, SIGTERM or SIGHUP ends the process,
/// unless it has been moved before. Many may live at once, on as many threads.
///
/// The first one of a process installs handlers for those signals, each only where the disposition
/// is the default one. A handler takes the files away and lets the signal end the process.
class TemporaryFile {
 public:
  /// Chooses the name. Creates nothing.
  explicit TemporaryFile(std::string destination);

  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::string& path() const { return path_; }

  /// Creates the file, empty, with the permissions of the regular file at the destination, else
  /// 0666 less the umask. Returns a descriptor for writing, which the caller closes. Throws
  /// FileError, which names the folder.
  int create();

  /// Gives the file the name of the destination, in one step for whoever looks there; what had that
  /// name is gone: a file, or a symbolic link itself, never a folder. To be called once. Throws
  /// FileError, which names the destination; the file then still goes with its owner.
  void moveToDestination();

 private:
  class ListLock;

  static void installHandlers();
  static void removeAllAndEnd(int signal);

  void enlist();
  void delist();

  /// The files that a signal takes away. Of the whole process, as signal handlers are; touched
  /// under a ListLock only.
  static TemporaryFile* first_;

  std::string destination_;
  std::string path_;
  bool isMoved_ = false;
  TemporaryFile* next_ = nullptr;
  TemporaryFile* previous_ = nullptr;
};

}  // namespace orvane
