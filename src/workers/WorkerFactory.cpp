#include "workers/WorkerFactory.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <set>
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

/// Starts workers and ends them, as the first process asks.
class Factory {
 public:
  Factory(Channel toFirst, const ProcessTitle& title)
      : toFirst_(std::move(toFirst)), title_(title) {}

  /// Until the first process is gone.
  void run() {
    while (const auto received = toFirst_.receive()) {
      if (received->message.kind == Message::Kind::start) {
        start();
      } else {
        reap(received->message.process);
      }
    }
    endAll();
  }

 private:
  void start() try {
    auto [first, workers] = Channel::makePair();
    const pid_t process = forkOrThrow();
    if (process == 0) {
      first = Channel(Descriptor());
      toFirst_ = Channel(Descriptor());
      runWorker(workers, title_);
      _exit(0);
    }
    workers_.insert(process);
    toFirst_.send({.kind = Message::Kind::started, .process = process}, first.descriptor());
  } catch (const std::system_error&) {
    toFirst_.send({.kind = Message::Kind::refused});
  }

  /// Ends the worker first: one that sleeps would be waited for without end.
  void reap(pid_t process) {
    int status = 0;
    const bool isKnown = workers_.erase(process) > 0 && kill(process, SIGKILL) == 0 &&
                         waitpid(process, &status, 0) == process;
    toFirst_.send(
        {.kind = isKnown ? Message::Kind::reaped : Message::Kind::refused, .status = status});
  }

  /// Waits for all, so that their processor time counts as this program's for who measures it.
  void endAll() {
    for (const pid_t worker : workers_) kill(worker, SIGKILL);
    while (wait(nullptr) > 0) continue;
  }

  Channel toFirst_;
  const ProcessTitle& title_;
  std::set<pid_t> workers_;
};

/// Lets libraries read the files now that they would open at their first use.
void warmUp() {
  Memory::usable();
  makeHEICContext();
}

/// An exception must not reach the caller, who would become a second first process.
[[noreturn]] void runFactory(Channel channel, const ProcessTitle& title) noexcept {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  signal(SIGCHLD, SIG_DFL);  // where the program's caller ignores it, no status would be kept
  title.show({});
  silence();
  Factory factory(closeOthers(std::move(channel)), title);
  warmUp();
  factory.run();
  _exit(0);
}

}  // namespace

WorkerFactory::WorkerFactory(const ProcessTitle& title) : channel_(Descriptor()) {
  auto ends = Channel::makePair();
  process_ = forkOrThrow();
  if (process_ == 0) {
    runFactory(std::move(ends.second), title);
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
  const bool isStarted =
      answer && answer->message.kind == Message::Kind::started && answer->descriptor;
  if (!isStarted) return std::nullopt;
  return Worker{answer->message.process, Channel(std::move(answer->descriptor))};
}

std::optional<int> WorkerFactory::reap(pid_t process) {
  const auto answer = ask({.kind = Message::Kind::reap, .process = process});
  if (!answer || answer->message.kind != Message::Kind::reaped) return std::nullopt;
  return answer->message.status;
}

}  // namespace orvane
