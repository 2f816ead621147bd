#include "platform/foundation/TemporaryFile.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <utility>

#include "platform/foundation/FileError.h"
#include "platform/foundation/TemporaryNames.h"

namespace orvane {
namespace {

constexpr mode_t defaultPermissions = 0666;

constexpr std::array endingSignals{SIGINT, SIGTERM, SIGHUP};

sigset_t endingSignalSet() {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : endingSignals) sigaddset(&set, signal);
  return set;
}

constinit std::atomic_flag listIsLocked;

/// Does not contain the destination's name, which may already have the maximum length.
std::string hiddenNameBeside(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1) + TemporaryNames::unique();
}

/// Follows symbolic links, for a link's own permissions mean nothing.
std::optional<mode_t> permissionsOfRegularFile(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return status.st_mode & 0777;
}

std::string folderOf(const std::string& path) { return std::filesystem::path(path).parent_path(); }

}  // namespace

constinit TemporaryFile* TemporaryFile::first_ = nullptr;

/// Blocks the ending signals on its thread. A handler therefore never interrupts a holder, and can
/// wait for one on another thread without a deadlock.
class TemporaryFile::ListLock {
 public:
  ListLock() {
    const sigset_t set = endingSignalSet();
    pthread_sigmask(SIG_BLOCK, &set, &formerMask_);
    while (listIsLocked.test_and_set(std::memory_order_acquire)) {
      listIsLocked.wait(true, std::memory_order_relaxed);
    }
  }

  ~ListLock() {
    listIsLocked.clear(std::memory_order_release);
    listIsLocked.notify_one();
    pthread_sigmask(SIG_SETMASK, &formerMask_, nullptr);
  }

  ListLock(const ListLock&) = delete;
  ListLock& operator=(const ListLock&) = delete;

 private:
  sigset_t formerMask_;
};

TemporaryFile::TemporaryFile(std::string destination)
    : destination_(std::move(destination)), path_(hiddenNameBeside(destination_)) {
  installHandlers();
  const ListLock lock;
  next_ = first_;
  if (next_ != nullptr) next_->previous_ = this;
  first_ = this;
}

TemporaryFile::~TemporaryFile() {
  if (isMoved_) return;
  const ListLock lock;
  unlink(path_.c_str());
  delist();
}

Descriptor TemporaryFile::create() {
  const auto formerPermissions = permissionsOfRegularFile(destination_);
  Descriptor descriptor;
  int error = 0;
  {
    // Under the lock, no file is created after a handler has removed them.
    const ListLock lock;
    descriptor = Descriptor(open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                                 formerPermissions.value_or(defaultPermissions)));
    error = errno;
  }
  if (!descriptor) throw FileError(error, folderOf(path_));
  // Restores the bits that the umask cleared. A file system without permissions may refuse.
  if (formerPermissions) fchmod(descriptor.number(), *formerPermissions);
  return descriptor;
}

void TemporaryFile::moveToDestination() {
  int error = 0;
  {
    // Under the lock, no file is moved after a handler has removed them.
    const ListLock lock;
    isMoved_ = rename(path_.c_str(), destination_.c_str()) == 0;
    error = errno;
    if (isMoved_) delist();
  }
  if (!isMoved_) throw FileError(error, destination_);
}

void TemporaryFile::delist() {
  if (next_ != nullptr) next_->previous_ = previous_;
  (previous_ != nullptr ? previous_->next_ : first_) = next_;
}

void TemporaryFile::installHandlers() {
  [[maybe_unused]] static const bool once = [] {
    for (const int signal : endingSignals) {
      struct sigaction action = {};
      sigaction(signal, nullptr, &action);
      if (action.sa_handler != SIG_DFL) continue;
      action.sa_handler = removeAllAndEnd;
      action.sa_mask = endingSignalSet();
      sigaction(signal, &action, nullptr);
    }
    return true;
  }();
}

/// Calls async-signal-safe functions only (POSIX.1-2017, section 2.4.3).
void TemporaryFile::removeAllAndEnd(int signal) {
  // Never released, so that no file is created or moved any more. The wait ends after two seconds,
  // for a holder may hang in a file system that does not answer.
  for (int waits = 0; listIsLocked.test_and_set(std::memory_order_acquire) && waits < 2000;
       ++waits) {
    poll(nullptr, 0, 1);
  }
  for (const TemporaryFile* file = first_; file != nullptr; file = file->next_) {
    unlink(file->path_.c_str());
  }
  struct sigaction action = {};
  action.sa_handler = SIG_DFL;
  sigaction(signal, &action, nullptr);
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, signal);
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
  raise(signal);
  // The first process of a container survives the default action of a signal.
  _exit(128 + signal);
}

}  // namespace orvane
