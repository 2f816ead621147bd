#include "platform/foundation/SourceFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <new>
#include <thread>

#include "platform/foundation/FileError.h"

namespace orvane {
namespace {

/// Whether somebody has opened the pipe for writing, or has done so before. tee(2) takes nothing
/// from the pipe: it gives 0 only where there is no writer.
bool hasWriter(int pipe) {
  int copy[2];
  if (::pipe2(copy, O_CLOEXEC) != 0) return true;
  const Descriptor reading(copy[0]), writing(copy[1]);
  return tee(pipe, copy[1], 1, SPLICE_F_NONBLOCK) != 0;
}

/// Opening for reading waits for a writer, without end; a non-blocking descriptor does not.
void waitForWriter(int pipe) {
  constexpr std::chrono::milliseconds step(10);
  constexpr int maximumSteps = 100;
  for (int steps = 0; !hasWriter(pipe); ++steps) {
    if (steps == maximumSteps) throw FileError(ETIMEDOUT);
    std::this_thread::sleep_for(step);
  }
}

void makeBlocking(int descriptor) {
  fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
}

}  // namespace

SourceFile SourceFile::open(const std::string& path) {
  constexpr int flags = O_RDONLY | O_NOCTTY | O_CLOEXEC;
  Descriptor descriptor(::open(path.c_str(), flags | O_NONBLOCK));
  if (!descriptor && errno == EWOULDBLOCK) {  // somebody else gives up a lease on it (fcntl(2))
    descriptor = Descriptor(::open(path.c_str(), flags));
  }
  if (!descriptor) throw FileError(errno);
  struct stat status = {};
  if (fstat(descriptor.number(), &status) != 0) throw FileError(errno);
  if (S_ISFIFO(status.st_mode)) waitForWriter(descriptor.number());
  makeBlocking(descriptor.number());
  const auto size = S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
  if (size > maximumBytes) throw FileError(EFBIG);
  return {std::move(descriptor), size};
}

Bytes SourceFile::readWhole() const try {
  Bytes bytes(size_);
  // A file of no size may still give bytes: those of the kernel, below /proc, do.
  bytes.resize(size_ > 0 ? fill(bytes, 0) : fillToTheEnd(bytes));
  return bytes;
} catch (const std::bad_alloc&) {
  throw FileError(ENOMEM);
}

/// Reads into `bytes` from `at` on, until it is full or the file ends. Returns the end of the bytes
/// read.
std::size_t SourceFile::fill(Bytes& bytes, std::size_t at) const {
  while (at < bytes.size()) {
    const ssize_t count = read(descriptor(), bytes.data() + at, bytes.size() - at);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw FileError(errno);
    if (count == 0) break;
    at += static_cast<std::size_t>(count);
  }
  return at;
}

/// Reads until the end of the file. The buffer doubles, up to one byte past the maximum.
std::size_t SourceFile::fillToTheEnd(Bytes& bytes) const {
  constexpr std::size_t firstStep = 65536;
  std::size_t filled = 0;
  do {
    bytes.resize(std::clamp<std::size_t>(bytes.size() * 2, firstStep, maximumBytes + 1));
    filled = fill(bytes, filled);
    if (filled > maximumBytes) throw FileError(EFBIG);
  } while (filled == bytes.size());
  return filled;
}

}  // namespace orvane
