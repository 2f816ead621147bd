#include "support/RunTool.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace orvane::test {
namespace {

void check(int errorNumber) {
  if (errorNumber != 0) throw std::system_error(errorNumber, std::generic_category());
}

struct Pipe {
  Descriptor reader;
  Descriptor writer;
};

Pipe makePipe(int flags) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC | flags) != 0) check(errno);
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

/// The writer is the terminal, the reader the master that shows it.
Pipe makeTerminal() {
  Pipe pipe;
  pipe.reader = Descriptor(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
  std::array<char, 128> name{};
  if (grantpt(pipe.reader.number()) != 0 || unlockpt(pipe.reader.number()) != 0) check(errno);
  check(ptsname_r(pipe.reader.number(), name.data(), name.size()));
  pipe.writer = Descriptor(open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  termios settings = {};
  tcgetattr(pipe.writer.number(), &settings);
  cfmakeraw(&settings);
  if (tcsetattr(pipe.writer.number(), TCSANOW, &settings) != 0) check(errno);
  return pipe;
}

Pipe outputPipe(Output output) {
  if (output == Output::terminal) return makeTerminal();
  Pipe pipe = makePipe(0);
  if (output == Output::reluctant) {
    fcntl(pipe.writer.number(), F_SETPIPE_SZ, 4096);
    fcntl(pipe.writer.number(), F_SETFL, O_NONBLOCK);
  }
  if (output == Output::readerGone) pipe.reader = Descriptor();
  return pipe;
}

class FileActions {
 public:
  FileActions() { check(posix_spawn_file_actions_init(&actions_)); }
  ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;

  void enter(const Descriptor& folder) {
    check(posix_spawn_file_actions_addfchdir_np(&actions_, folder.number()));
  }
  void connect(int descriptor, const Descriptor& target) {
    check(posix_spawn_file_actions_adddup2(&actions_, target.number(), descriptor));
  }
  void connect(int descriptor, const char* path, int flags) {
    check(posix_spawn_file_actions_addopen(&actions_, descriptor, path, flags, 0));
  }
  void close(int descriptor) { check(posix_spawn_file_actions_addclose(&actions_, descriptor)); }

  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_;
};

/// No signal is ignored in a run, whatever the tests were started with.
class DefaultSignals {
 public:
  DefaultSignals() {
    check(posix_spawnattr_init(&attributes_));
    sigset_t all;
    sigfillset(&all);
    check(posix_spawnattr_setsigdefault(&attributes_, &all));
    check(posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF));
  }
  ~DefaultSignals() { posix_spawnattr_destroy(&attributes_); }
  DefaultSignals(const DefaultSignals&) = delete;
  DefaultSignals& operator=(const DefaultSignals&) = delete;

  const posix_spawnattr_t* get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_;
};

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

/// The tests' own environment but for what makes a locale and a home.
std::map<std::string, std::string> neutralEnvironment() {
  std::map<std::string, std::string> variables;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text(*entry);
    const std::string name = text.substr(0, text.find('='));
    const bool isPersonal = name == "HOME" || name.starts_with("XDG_") || name == "LANG" ||
                            name == "LANGUAGE" || name.starts_with("LC_");
    if (!isPersonal) variables[name] = text.substr(name.size() + 1);
  }
  // A finding of a sanitizer must not look like a file that failed, whose status is 1 as well.
  for (const char* name : {"ASAN_OPTIONS", "UBSAN_OPTIONS"}) variables[name] += ":exitcode=99";
  return variables;
}

std::vector<std::string> environmentWith(const std::map<std::string, std::string>& changes) {
  auto variables = neutralEnvironment();
  for (const auto& [name, value] : changes) variables[name] = value;
  std::vector<std::string> entries;
  for (const auto& [name, value] : variables) {
    if (!value.empty()) entries.push_back(name + "=" + value);
  }
  return entries;
}

/// `command` is a program, looked up in PATH, and its arguments.
pid_t spawn(std::vector<std::string> command, const std::map<std::string, std::string>& changes,
            const FileActions& actions) {
  std::vector<std::string> variables = environmentWith(changes);
  const DefaultSignals signals;
  pid_t process = 0;
  check(posix_spawnp(&process, command.front().c_str(), actions.get(), signals.get(),
                     pointers(command).data(), pointers(variables).data()));
  return process;
}

/// Reads once. False at the end.
bool readSome(const Descriptor& reader, std::string& into) {
  std::array<char, 65536> block;
  const ssize_t count = ::read(reader.number(), block.data(), block.size());
  if (count > 0) into.append(block.data(), static_cast<std::size_t>(count));
  return count > 0 || (count < 0 && errno == EINTR);
}

/// Reads both streams, whichever has something, until both end.
void readStreams(Descriptor& output, Descriptor& errors, ToolRun& run) {
  while (output.number() != -1 || errors.number() != -1) {
    std::array<pollfd, 2> waiting{{{output.number(), POLLIN, 0}, {errors.number(), POLLIN, 0}}};
    poll(waiting.data(), waiting.size(), -1);
    if (waiting[0].revents != 0 && !readSome(output, run.output)) output = Descriptor();
    if (waiting[1].revents == 0) continue;
    if (readSome(errors, run.errors)) {
      ++run.errorWrites;
    } else {
      errors = Descriptor();
    }
  }
}

}  // namespace

RunningTool::RunningTool(pid_t process, Descriptor output, Descriptor errors)
    : process_(process), output_(std::move(output)), errors_(std::move(errors)) {}

void RunningTool::send(int signal) const { kill(process_, signal); }

ToolRun RunningTool::wait() {
  ToolRun run;
  readStreams(output_, errors_, run);
  int ending = 0;
  while (waitpid(process_, &ending, 0) == -1 && errno == EINTR) continue;
  if (WIFEXITED(ending)) run.status = WEXITSTATUS(ending);
  if (WIFSIGNALED(ending)) run.signal = WTERMSIG(ending);
  return run;
}

Tool::Tool() : openFolder_(open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  environment = {{"HOME", home_.path()}, {"XDG_DATA_HOME", home_ / "data"}};
}

std::filesystem::path Tool::profileFile() const {
  return home_.path() / "data" / "Orvane" / "exportProfiles.json";
}

RunningTool Tool::start(const std::vector<std::string>& arguments, Output output) const {
  Pipe outputs = outputPipe(output);
  Pipe errors = makePipe(O_DIRECT);  // a packet for each write

  FileActions actions;
  actions.enter(openFolder_);
  actions.connect(STDIN_FILENO, "/dev/null", O_RDONLY);
  actions.connect(STDOUT_FILENO, outputs.writer);
  actions.connect(STDERR_FILENO, errors.writer);
  if (output == Output::closed) actions.close(STDOUT_FILENO);
  if (output == Output::full) actions.connect(STDOUT_FILENO, "/dev/full", O_WRONLY);
  std::vector<std::string> command = launcher;
  command.emplace_back(ORVANE_CLI);
  command.insert(command.end(), arguments.begin(), arguments.end());
  return RunningTool(spawn(std::move(command), environment, actions), std::move(outputs.reader),
                     std::move(errors.reader));
}

ToolRun Tool::run(const std::vector<std::string>& arguments, Output output) const {
  return start(arguments, output).wait();
}

}  // namespace orvane::test
