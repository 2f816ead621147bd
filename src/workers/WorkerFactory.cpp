#include "workers/WorkerFactory.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

#include "codecs/heic/HEICContext.h"
#include "platform/foundation/Memory.h"
#include "workers/Worker.h"

namespace orvane {
namespace {

pid_t forkOrThrow() {
  const pid_t process = fork();
  if (process < 0) throw std::system_error(errno, std::generic_category());
  return process;
}

/// Codec libraries write their remarks to the standard streams.
void silence() {
  const Descriptor nowhere(open("/dev/null", O_RDWR | O_CLOEXEC));
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    dup2(nowhere.number(), stream);
  }
}

/// Closes every descriptor but the standard streams and the one of `kept`, which it moves: workers
/// are to have nothing of the first process.
Channel closeOthers(Channel kept) {
  constexpr int place = STDERR_FILENO + 1;
  Channel moved(Descriptor(dup3(kept.descriptor(), place, O_CLOEXEC)));
  closefrom(place + 1);
  return moved;
}

/// A new worker and the first process's end of its channel.
void startWorker(const Channel& toFirst) try {
  auto [first, workers] = Channel::makePair();
  const pid_t process = forkOrThrow();
  if (process == 0) {
    first = Channel(Descriptor());
    close(toFirst.descriptor());
    runWorker(workers);
    _exit(0);
  }
  toFirst.send({.kind = Message::Kind::started, .process = process}, first.descriptor());
} catch (const std::system_error&) {
  toFirst.send({.kind = Message::Kind::refused});
}

void reapWorker(const Channel& toFirst, pid_t process) {
  int status = 0;
  const bool isKnown = waitpid(process, &status, 0) == process;
  toFirst.send({.kind = isKnown ? Message::Kind::reaped : Message::Kind::refused, .value = status});
}

/// Lets libraries read the files now that they would open at their first use.
void warmUp() {
  Memory::usable();
  makeHEICContext();
}

[[noreturn]] void runFactory(Channel channel) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  silence();
  const Channel toFirst = closeOthers(std::move(channel));
  warmUp();
  while (const auto received = toFirst.receive()) {
    if (received->message.kind == Message::Kind::start) {
      startWorker(toFirst);
    } else {
      reapWorker(toFirst, received->message.process);
    }
  }
  // Their processor time counts as this process's, for who measures the program.
  while (wait(nullptr) > 0) continue;
  _exit(0);
}

}  // namespace

WorkerFactory::WorkerFactory() : channel_(Descriptor()) {
  auto ends = Channel::makePair();
  process_ = forkOrThrow();
  if (process_ == 0) {
    runFactory(std::move(ends.second));
  }
  channel_ = std::move(ends.first);
}

WorkerFactory::~WorkerFactory() {
  channel_ = Channel(Descriptor());
  while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) continue;
}

std::optional<Channel::Received> WorkerFactory::ask(const Message& question) {
  const std::scoped_lock lock(mutex_);
  if (!channel_.send(question)) return std::nullopt;
  return channel_.receive();
}

std::optional<WorkerFactory::Worker> WorkerFactory::start() {
  auto answer = ask({.kind = Message::Kind::start});
  if (!answer || answer->message.kind != Message::Kind::started) return std::nullopt;
  return Worker{answer->message.process, Channel(std::move(answer->descriptor))};
}

std::optional<int> WorkerFactory::reap(pid_t process) {
  const auto answer = ask({.kind = Message::Kind::reap, .process = process});
  if (!answer || answer->message.kind != Message::Kind::reaped) return std::nullopt;
  return static_cast<int>(answer->message.value);
}

}  // namespace orvane
