#include "workers/Worker.h"

#include <fcntl.h>
#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
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

/// Lets allocations fail where this process would hold more private writable bytes.
void limitData([[maybe_unused]] std::uint64_t bytes) {
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // their own memory is unknown
  rlimit limits{};
  getrlimit(RLIMIT_DATA, &limits);
  limits.rlim_cur = std::min<rlim_t>(bytes, limits.rlim_max);
  setrlimit(RLIMIT_DATA, &limits);
#endif
}

/// A heap of its own for each thread reserves 64 MiB of address space. Only threads that share a
/// picture are faster with it.
void shareHeap([[maybe_unused]] int threads) {
#ifdef M_ARENA_MAX
  mallopt(M_ARENA_MAX, threads == 1 ? 1 : 0);
#endif
}

/// Private writable bytes of this process (proc(5): the field "data").
std::uint64_t dataBytes() {
  std::ifstream statm("/proc/self/statm");
  std::uint64_t pages = 0;
  for (int field = 1; field <= 6; ++field) statm >> pages;
  return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

/// `bytes` in memory that can be handed over and that nobody changes any more. Throws FileError: a
/// user's limit of file sizes counts for this memory as it does for the output itself.
Descriptor sealed(ByteView bytes) {
  Descriptor memory(memfd_create("output", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  if (!memory) throw FileError(errno);
  try {
    memory.write(bytes);
  } catch (const FileError& error) {
    if (error.errorNumber() != EFBIG) AllocationFailures::report();
    throw;
  }
  fcntl(memory.number(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE);
  return memory;
}

/// Memory that a worker keeps for its next job, in bytes of the grant for the last one.
constexpr std::uint64_t largestKept = std::uint64_t{128} << 20;

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
    channel_.send({.kind = Kind::failed, .failure = failure, .errorNumber = errorNumber});
  }

  void compress(const Message& job, const SourceFile& source) {
    permit(job.bytes);
    shareHeap(job.threads);
    Bytes file = source.readWhole();
    const auto sourceSize = static_cast<std::int64_t>(file.size());
    Compression compression(file, job.format, job.quality);
    const ImageSource& header = compression.source();
    askFor(file.size() + JobCost::memory(header, job.format, job.threads),
           JobCost::seconds(header, job.format));
    compression.decode();
    channel_.send({.kind = Kind::decoded});
    failure_ = Failure::encoding;
    if (!compression.encodesFromFile()) file = Bytes();
    const Bytes output = compression.encode(job.threads);
    const bool isShort = output.size() <= Channel::maximumPayload;
    const Descriptor memory = isShort ? Descriptor() : sealed(output);
    channel_.send({.kind = Kind::done, .bytes = output.size(), .sourceSize = sourceSize},
                  memory.number(), isShort ? output : ByteView());
  }

  /// Lets allocations fail past this many bytes.
  void permit(std::uint64_t bytes) {
    granted_ = bytes;
    limitData(ownBytes_ + bytes);
  }

  /// Waits until so much may be taken. Small pictures have it from the beginning.
  void askFor(std::uint64_t bytes, std::uint64_t seconds) {
    if (bytes <= granted_ && seconds <= JobCost::smallSeconds) return;
    channel_.send({.kind = Kind::need, .bytes = bytes, .seconds = seconds});
    const auto answer = channel_.receive();
    if (!answer) _exit(0);
    permit(answer->message.bytes);
  }

  const Channel& channel_;
  const std::uint64_t ownBytes_;
  std::uint64_t granted_ = 0;            ///< bytes for the job
  Failure failure_ = Failure::decoding;  ///< of what is at work
};

}  // namespace

void runWorker(const Channel& channel, const ProcessTitle& title) noexcept {
  firstProcess = &channel;
  Worker worker(channel, dataBytes() + JobCost::baseMemory);
  Sandbox::enter();
  AllocationFailures::watch(reportShortMemory);
  std::array<std::uint8_t, Channel::maximumPayload> name;
  while (auto received = channel.receive(name)) {
    title.show({reinterpret_cast<const char*>(name.data()), received->payloadSize});
    worker.run(received->message,
               SourceFile(std::move(received->descriptor),
                          static_cast<std::uint64_t>(received->message.sourceSize)));
    title.show({});
  }
}

}  // namespace orvane
