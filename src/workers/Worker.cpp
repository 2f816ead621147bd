#include "workers/Worker.h"

#include <fcntl.h>
#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <utility>

#include "picture/ImageProcessingError.h"
#include "pipeline/Compression.h"
#include "platform/foundation/AllocationFailures.h"
#include "platform/foundation/FileError.h"
#include "platform/foundation/SourceFile.h"
#include "workers/JobCost.h"
#include "workers/Sandbox.h"

namespace orvane {
namespace {

using Kind = Message::Kind;
using Failure = Message::Failure;

/// Of the whole process: the reaction to a failed allocation takes no argument.
const Channel* firstProcess = nullptr;

void reportShortMemory() { firstProcess->send({.kind = Kind::memoryShort}); }

void limit(__rlimit_resource resource, std::uint64_t value) {
  rlimit limits{};
  getrlimit(resource, &limits);
  limits.rlim_cur = std::min<rlim_t>(value, limits.rlim_max);
  setrlimit(resource, &limits);
}

/// Private writable bytes of this process (proc(5): the field "data").
std::uint64_t dataBytes() {
  std::ifstream statm("/proc/self/statm");
  std::uint64_t pages = 0;
  for (int field = 1; field <= 6; ++field) statm >> pages;
  return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

std::uint64_t processorSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<std::uint64_t>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) + 1;
}

/// `bytes` in memory that can be handed over and that nobody changes any more. Throws FileError: a
/// user's limit of file sizes counts for this memory as it does for the output itself.
Descriptor sealed(ByteView bytes) {
  Descriptor memory(memfd_create("output", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  if (!memory) throw FileError(errno);
  while (!bytes.empty()) {
    const ssize_t written = write(memory.number(), bytes.data(), bytes.size());
    if (written < 0) throw FileError(errno);
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  fcntl(memory.number(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE);
  return memory;
}

/// Memory that a worker keeps for its next job, in bytes of the grant for the last one.
constexpr std::int64_t largestKept = std::int64_t{128} << 20;

/// Does one job after the other.
class Worker {
 public:
  Worker(const Channel& channel, std::uint64_t ownBytes) : channel_(channel), ownBytes_(ownBytes) {}

  void run(const Message& job, SourceFile source) {
    failure_ = Failure::decoding;
    try {
      compress(job, source);
    } catch (const FileError& error) {
      fail(Failure::file, error.errorNumber());
    } catch (const ImageProcessingError& error) {
      const bool isContext = error.errorCase() == ImageProcessingError::Case::contextCreationFailed;
      fail(isContext ? Failure::context : failure_);
    } catch (const std::exception&) {
      fail(failure_);
    }
    if (granted_ > largestKept) malloc_trim(0);
  }

 private:
  void fail(Failure failure, int errorNumber = 0) const {
    channel_.send({.kind = Kind::failed, .failure = failure, .value = errorNumber});
  }

  void compress(const Message& job, const SourceFile& source) {
    limit(RLIMIT_CPU, processorSeconds() + JobCost::openingSeconds);
    permit(job.value);
    const Bytes file = source.readWhole();
    Compression compression(file, job.format, job.quality);
    const ImageSource& header = compression.source();
    limit(RLIMIT_CPU, processorSeconds() + JobCost::seconds(header, job.format));
    askFor(file.size() + JobCost::decodingMemory(header));
    compression.decode();
    channel_.send({.kind = Kind::decoded});
    failure_ = Failure::encoding;
    askFor(file.size() + JobCost::encodingMemory(header, job.format, compression.hasAlpha()));
    const Bytes output = compression.encode();
    const Descriptor memory = sealed(output);
    channel_.send({.kind = Kind::done,
                   .value = static_cast<std::int64_t>(output.size()),
                   .sourceSize = static_cast<std::int64_t>(file.size())},
                  memory.number());
  }

  /// Lets allocations fail past this many bytes, and a little more.
  void permit(std::int64_t bytes) {
    granted_ = bytes;
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // their own memory is unknown
    limit(RLIMIT_DATA, ownBytes_ + static_cast<std::uint64_t>(bytes + bytes / 4));
#endif
  }

  /// Waits until so much may be taken. Small pictures have it from the beginning.
  void askFor(std::uint64_t bytes) {
    if (std::cmp_less_equal(bytes, granted_)) return;
    channel_.send({.kind = Kind::need, .value = static_cast<std::int64_t>(bytes)});
    const auto answer = channel_.receive();
    if (!answer) _exit(0);
    permit(answer->message.value);
  }

  const Channel& channel_;
  const std::uint64_t ownBytes_;
  std::int64_t granted_ = 0;             ///< bytes for the job
  Failure failure_ = Failure::decoding;  ///< of what is at work
};

}  // namespace

void runWorker(const Channel& channel) {
  firstProcess = &channel;
  Worker worker(channel, dataBytes() + JobCost::baseMemory);
  Sandbox::enter();
  AllocationFailures::watch(reportShortMemory);
  while (auto received = channel.receive()) {
    worker.run(received->message,
               SourceFile(std::move(received->descriptor),
                          static_cast<std::uint64_t>(received->message.sourceSize)));
  }
}

}  // namespace orvane
