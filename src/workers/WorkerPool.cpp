#include "workers/WorkerPool.h"

#include <fcntl.h>
#include <malloc.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <system_error>
#include <utility>

#include "picture/ImageProcessingError.h"
#include "platform/foundation/FileError.h"
#include "platform/foundation/Memory.h"
#include "platform/foundation/SourceFile.h"
#include "workers/JobCost.h"

namespace orvane {
namespace {

using Kind = Message::Kind;

/// Workers that have held more are not used again: their memory may be in pieces.
constexpr std::uint64_t maximumReusedShare = std::uint64_t{512} << 20;

/// Leaves a reserve for this process and the system.
std::uint64_t memoryForFiles() { return Memory::usable() / 10 * 9; }

/// The first share of a file: enough to read it, and for the rest of the work on a small picture. A
/// source without a size, such as a pipe, may turn out to be large.
std::uint64_t firstShare(const SourceFile& source, const MemoryBudget& budget) {
  return source.size() > 0 ? source.size() + JobCost::smallPicture : budget.total() / 4;
}

bool wasKilled(std::optional<int> status) {
  return status && WIFSIGNALED(*status) && WTERMSIG(*status) == SIGKILL;
}

/// The memory in which a worker has put its output, read-only. Throws FileError when it is not what
/// it should be: the worker may have been taken over by its picture.
std::shared_ptr<const void> mapped(const Descriptor& memory, std::size_t size) {
  constexpr int neededSeals = F_SEAL_SHRINK | F_SEAL_WRITE;
  struct stat status {};
  const bool isGood = (fcntl(memory.number(), F_GET_SEALS) & neededSeals) == neededSeals &&
                      fstat(memory.number(), &status) == 0 &&
                      std::cmp_equal(status.st_size, size) && size > 0;
  if (!isGood) throw std::bad_alloc();
  void* const start = mmap(nullptr, size, PROT_READ, MAP_SHARED, memory.number(), 0);
  if (start == MAP_FAILED) throw std::bad_alloc();
  return {start, [size](void* mapping) { munmap(mapping, size); }};
}

}  // namespace

/// The outcome of one attempt.
struct WorkerPool::Outcome {
  std::optional<CompressedFile> file;
  std::exception_ptr error;  ///< when there is no file
  bool wasShortOfMemory = false;
  bool isWorkerAlive = true;
};

namespace {

std::exception_ptr errorOf(const Message& message, ImageFormat format) {
  switch (message.failure) {
    case Message::Failure::file:
      return std::make_exception_ptr(FileError(static_cast<int>(message.value)));
    case Message::Failure::decoding:
      return std::make_exception_ptr(ImageProcessingError::decodingFailed());
    case Message::Failure::context:
      return std::make_exception_ptr(ImageProcessingError::contextCreationFailed());
    case Message::Failure::encoding:
      break;
  }
  return std::make_exception_ptr(ImageProcessingError::encodingFailed(format));
}

}  // namespace

/// One job's exchange of messages with a worker.
class WorkerPool::Conversation {
 public:
  Conversation(const Channel& worker, MemoryBudget::Share& share, Company company,
               ImageFormat format)
      : worker_(worker), share_(share), company_(company), format_(format) {}

  /// Follows a job that the worker has been given.
  Outcome run() {
    while (outcome_.isWorkerAlive && !isOver()) {
      if (auto received = worker_.receive()) {
        take(*received);
      } else {
        outcome_.isWorkerAlive = false;
        outcome_.error = errorOf(stage_, format_);
      }
    }
    return std::move(outcome_);
  }

 private:
  bool isOver() const { return outcome_.file || outcome_.error; }

  void take(const Channel::Received& received) {
    const Message& message = received.message;
    switch (message.kind) {
      case Kind::need:
        // A file that is alone has everything already.
        if (company_ == Company::others) share_.resize(static_cast<std::uint64_t>(message.value));
        worker_.send({.kind = Kind::grant, .value = static_cast<std::int64_t>(share_.bytes())});
        break;
      case Kind::decoded:
        stage_.failure = Message::Failure::encoding;
        break;
      case Kind::memoryShort:
        outcome_.wasShortOfMemory = true;
        break;
      case Kind::done:
        takeOutput(received);
        break;
      default:
        outcome_.error = errorOf(message, format_);
    }
  }

  void takeOutput(const Channel::Received& received) {
    const auto size = static_cast<std::size_t>(received.message.value);
    const auto storage = mapped(received.descriptor, size);
    outcome_.file = {.sourceSize = received.message.sourceSize,
                     .storage = storage,
                     .output = {static_cast<const std::uint8_t*>(storage.get()), size}};
  }

  const Channel& worker_;
  MemoryBudget::Share& share_;
  Company company_;
  ImageFormat format_;
  Message stage_{.failure = Message::Failure::decoding};  ///< of a worker that ends now
  Outcome outcome_;
};

WorkerPool::WorkerPool() : budget_(memoryForFiles()) {
#ifdef M_ARENA_MAX
  // This process's threads mostly wait. A heap of its own for each would reserve 64 MiB of address
  // space.
  mallopt(M_ARENA_MAX, 1);
#endif
}

ImageCompressor::CompressSource WorkerPool::sourceCompressor() try {
  return [pool = std::make_shared<WorkerPool>()](const auto&... arguments) {
    return pool->compress(arguments...);
  };
} catch (const std::system_error&) {
  return compressHere;
}

CompressedFile WorkerPool::compress(const std::string& path, ImageFormat format, double quality) {
  Outcome outcome = attempt(path, format, quality, Company::others);
  // An outcome without enough memory would depend on the other files at work.
  if (outcome.wasShortOfMemory) outcome = attempt(path, format, quality, Company::none);
  if (!outcome.file) std::rethrow_exception(outcome.error);
  return *std::move(outcome.file);
}

WorkerPool::Outcome WorkerPool::attempt(const std::string& path, ImageFormat format, double quality,
                                        Company company) {
  const SourceFile source = SourceFile::open(path);
  MemoryBudget::Share share(
      budget_, company == Company::none ? budget_.total() : firstShare(source, budget_));
  const Message job{.kind = Kind::job,
                    .format = format,
                    .value = static_cast<std::int64_t>(share.bytes()),
                    .sourceSize = static_cast<std::int64_t>(source.size()),
                    .quality = quality};
  std::optional<Worker> worker = take(company);
  while (worker && !worker->channel.send(job, source.descriptor())) {
    bury(*std::move(worker));  // it died while it was idle
    worker = take(company);
  }
  if (!worker) return {.file = compressHere(path, format, quality)};
  Outcome outcome = Conversation(worker->channel, share, company, format).run();
  const bool isReusable =
      outcome.isWorkerAlive && !outcome.wasShortOfMemory && share.bytes() <= maximumReusedShare;
  if (isReusable) {
    giveBack(*std::move(worker));
  } else if (wasKilled(bury(*std::move(worker))) && !outcome.isWorkerAlive) {
    outcome.wasShortOfMemory = true;  // the system kills when memory is short
  }
  return outcome;
}

std::optional<WorkerPool::Worker> WorkerPool::take(Company company) {
  if (company == Company::others) {
    const std::scoped_lock lock(mutex_);
    if (!idle_.empty()) {
      Worker worker = std::move(idle_.back());
      idle_.pop_back();
      return worker;
    }
  }
  return factory_.start();
}

void WorkerPool::giveBack(Worker worker) {
  const std::scoped_lock lock(mutex_);
  idle_.push_back(std::move(worker));
}

std::optional<int> WorkerPool::bury(Worker worker) {
  worker.channel = Channel(Descriptor());
  return factory_.reap(worker.process);
}

}  // namespace orvane
