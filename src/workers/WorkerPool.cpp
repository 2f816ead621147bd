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
#include "platform/foundation/Text.h"
#include "workers/JobCost.h"
#include "workers/Supervision.h"

namespace orvane {
namespace {

using Failure = Message::Failure;
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

std::exception_ptr errorOf(Failure failure, int errorNumber, ImageFormat format) {
  switch (failure) {
    case Failure::file:
      return std::make_exception_ptr(FileError(errorNumber));
    case Failure::decoding:
      return std::make_exception_ptr(ImageProcessingError::decodingFailed());
    case Failure::context:
      return std::make_exception_ptr(ImageProcessingError::contextCreationFailed());
    case Failure::encoding:
      break;
  }
  return std::make_exception_ptr(ImageProcessingError::encodingFailed(format));
}

/// Whether this is memory of so many bytes that nobody can change any more.
bool isSealed(const Descriptor& memory, std::size_t size) {
  constexpr int neededSeals = F_SEAL_SHRINK | F_SEAL_WRITE;
  struct stat status {};
  return (fcntl(memory.number(), F_GET_SEALS) & neededSeals) == neededSeals &&
         fstat(memory.number(), &status) == 0 && std::cmp_equal(status.st_size, size);
}

/// The last component of a path, for a title. Shorter than a message's payload, as paths are.
std::string shownName(const std::string& path) {
  return Text::withoutControlCharacters(path.substr(path.rfind('/') + 1));
}

ByteView asBytes(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

bool wasKilled(std::optional<int> status) {
  return status && WIFSIGNALED(*status) && WTERMSIG(*status) == SIGKILL;
}

/// The memory, read-only; null where it cannot be mapped.
std::shared_ptr<const void> mapped(const Descriptor& memory, std::size_t size) {
  void* const start = mmap(nullptr, size, PROT_READ, MAP_SHARED, memory.number(), 0);
  if (start == MAP_FAILED) return nullptr;
  return {start, [size](void* mapping) { munmap(mapping, size); }};
}

}  // namespace

/// The outcome of one attempt.
struct WorkerPool::Outcome {
  enum class WorkerState { healthy, ended, givenUp };

  std::optional<CompressedFile> file;
  std::exception_ptr error;  ///< when there is no file
  bool wasShortOfMemory = false;
  WorkerState workerState = WorkerState::healthy;
};

/// One job's exchange of messages with a worker, which may have been taken over by its picture.
class WorkerPool::Conversation {
 public:
  Conversation(const WorkerPool& pool, const Worker& worker, const SourceFile& source,
               MemoryBudget::Share& share, const Message& job)
      : pool_(pool),
        channel_(worker.channel),
        supervision_(worker.process, pool.patience_),
        source_(source),
        share_(share),
        job_(job) {
    supervision_.allow(JobCost::smallSeconds);
  }

  /// Follows a job that the worker has been given.
  Outcome run() {
    while (!outcome_.file && !outcome_.error) {
      if (!channel_.waitFor(std::chrono::seconds(1))) {
        if (supervision_.isExceeded()) giveUp();
      } else if (auto received = channel_.receive({payload_.get(), Channel::maximumPayload})) {
        take(*received);
      } else {
        end(Outcome::WorkerState::ended);
      }
    }
    return std::move(outcome_);
  }

 private:
  void end(Outcome::WorkerState state) {
    outcome_.workerState = state;
    outcome_.error = errorOf(stage_, 0, job_.format);
  }

  void giveUp() { end(Outcome::WorkerState::givenUp); }

  void take(const Channel::Received& received) {
    const Message& message = received.message;
    switch (message.kind) {
      case Kind::need:
        grant(message);
        break;
      case Kind::decoded:
        stage_ = Failure::encoding;
        break;
      case Kind::memoryShort:
        outcome_.wasShortOfMemory = true;
        break;
      case Kind::done:
        takeOutput(received);
        break;
      case Kind::failed:
        outcome_.error = errorOf(message.failure, message.errorNumber, job_.format);
        break;
      default:
        giveUp();
    }
  }

  void grant(const Message& need) {
    // A file that is alone has everything already.
    const std::uint64_t wanted = std::min(need.bytes, pool_.budget_.total());
    if (wanted > share_.bytes()) {
      share_.exchange(std::min(source_.size(), share_.bytes()), wanted);
    }
    supervision_.allow(std::min(need.seconds, maximumSeconds));
    channel_.send({.kind = Kind::grant, .bytes = pool_.limit(share_)});
  }

  void takeOutput(const Channel::Received& received) {
    const std::uint64_t size = received.message.bytes;
    if (size == 0 || size > pool_.limit(share_)) return giveUp();
    if (received.payloadSize == size) return setOutput(received, payload_);
    if (!isSealed(received.descriptor, size)) return giveUp();
    if (const auto storage = mapped(received.descriptor, size)) {
      setOutput(received, storage);
    } else {
      outcome_.wasShortOfMemory = true;
      outcome_.error = errorOf(Failure::encoding, 0, job_.format);
    }
  }

  void setOutput(const Channel::Received& done, const std::shared_ptr<const void>& storage) {
    outcome_.file = {.sourceSize = std::max<std::int64_t>(done.message.sourceSize, 0),
                     .storage = storage,
                     .output = {static_cast<const std::uint8_t*>(storage.get()),
                                static_cast<std::size_t>(done.message.bytes)}};
  }

  /// More than any picture takes.
  static constexpr std::uint64_t maximumSeconds = std::uint64_t{7} * 24 * 3600;

  const WorkerPool& pool_;
  const Channel& channel_;
  Supervision supervision_;
  const SourceFile& source_;
  MemoryBudget::Share& share_;
  const Message& job_;
  const std::shared_ptr<std::uint8_t[]> payload_ =
      std::make_shared_for_overwrite<std::uint8_t[]>(Channel::maximumPayload);
  Failure stage_ = Failure::decoding;  ///< of a worker that ends now
  Outcome outcome_;
};

WorkerPool::WorkerPool(const ProcessTitle& title, const ProcessorBudget::Run& run,
                       std::chrono::milliseconds patience)
    : patience_(patience), factory_(title), budget_(memoryForFiles()), processors_(run) {
#ifdef M_ARENA_MAX
  // This process's threads mostly wait. A heap of its own for each would reserve 64 MiB of address
  // space.
  mallopt(M_ARENA_MAX, 1);
#endif
}

ImageCompressor::CompressSource WorkerPool::sourceCompressor(const ProcessTitle& title,
                                                             const ProcessorBudget::Run& run) try {
  return [pool = std::make_shared<WorkerPool>(title, run)](const auto&... arguments) {
    return pool->compress(arguments...);
  };
} catch (const std::system_error&) {
  return compressHere;
}

CompressedFile WorkerPool::compress(const std::string& path, ImageFormat format, double quality) {
  const ProcessorBudget::Share processors(processors_);
  const SourceFile source = SourceFile::open(path);
  Task task{shownName(path), format, quality, processors.threads()};
  Outcome outcome = attempt(source, task, Company::others);
  // An outcome without enough memory would depend on the other files at work, and on the threads. A
  // pipe can be read only once.
  if (outcome.wasShortOfMemory && source.size() > 0) {
    task.threads = 1;
    outcome = attempt(SourceFile::open(path), task, Company::none);
  }
  if (!outcome.file) std::rethrow_exception(outcome.error);
  return *std::move(outcome.file);
}

WorkerPool::Outcome WorkerPool::attempt(const SourceFile& source, const Task& task,
                                        Company company) {
  const bool isAlone = company == Company::none;
  MemoryBudget::Share share(
      budget_, isAlone ? budget_.total() : std::min(firstShare(source, budget_), budget_.total()));
  const Message job{.kind = Kind::job,
                    .format = task.format,
                    .threads = task.threads,
                    .bytes = limit(share),
                    .sourceSize = static_cast<std::int64_t>(source.size()),
                    .quality = task.quality};
  std::optional<Worker> worker = take(company);
  while (worker && !worker->channel.send(job, source.descriptor(), asBytes(task.name))) {
    bury(*std::move(worker));  // it died while it was idle
    worker = take(company);
  }
  if (!worker) {
    share.exchange(0, budget_.total());
    return {.file = compressOpenFile(source, task.format, task.quality)};
  }
  Outcome outcome = Conversation(*this, *worker, source, share, job).run();
  using State = Outcome::WorkerState;
  if (outcome.workerState == State::healthy && !outcome.wasShortOfMemory &&
      share.bytes() <= maximumReusedShare) {
    giveBack(*std::move(worker));
  } else if (wasKilled(bury(*std::move(worker))) && outcome.workerState == State::ended) {
    outcome.wasShortOfMemory = true;  // the system kills when memory is short
  }
  return outcome;
}

std::uint64_t WorkerPool::limit(const MemoryBudget::Share& share) const {
  return std::min(share.bytes() + share.bytes() / 4, budget_.total());
}

std::optional<WorkerPool::Worker> WorkerPool::take(Company company) {
  if (company == Company::others) {
    const std::scoped_lock lock(mutex_);
    if (auto worker = takeIdle()) return worker;
  }
  auto worker = factory_.start();
  std::unique_lock lock(mutex_);
  if (worker) {
    ++living_;
    return worker;
  }
  changed_.wait(lock, [&] { return !idle_.empty() || living_ == 0; });
  return takeIdle();
}

std::optional<WorkerPool::Worker> WorkerPool::takeIdle() {
  if (idle_.empty()) return std::nullopt;
  Worker worker = std::move(idle_.back());
  idle_.pop_back();
  return worker;
}

void WorkerPool::giveBack(Worker worker) {
  const std::scoped_lock lock(mutex_);
  idle_.push_back(std::move(worker));
  changed_.notify_one();
}

std::optional<int> WorkerPool::bury(Worker worker) {
  worker.channel = Channel(Descriptor());
  const auto status = factory_.reap(worker.process);
  const std::scoped_lock lock(mutex_);
  --living_;
  changed_.notify_all();
  return status;
}

}  // namespace orvane
