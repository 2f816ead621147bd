#include "platform/foundation/TemporaryNames.h"

#include <signal.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <regex>
#include <sstream>
#include <system_error>

#include "platform/foundation/UUID.h"

namespace orvane::TemporaryNames {
namespace {

namespace fs = std::filesystem;

#ifdef __linux__
constexpr clockid_t clockSinceBoot = CLOCK_BOOTTIME;
#else
constexpr clockid_t clockSinceBoot = CLOCK_MONOTONIC;
#endif

/// The process that made a name. Numbers are kept as the system writes them.
struct Writer {
  std::string boot;          ///< a UUID that changes with every boot
  std::string pidNamespace;  ///< see pid_namespaces(7)
  std::string process;
  std::string start;  ///< clock ticks since the boot
};

std::string firstLine(const std::string& path) {
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  return line;
}

std::string linkTarget(const std::string& path) {
  std::error_code ignored;
  return fs::read_symlink(path, ignored);
}

/// The number in "pid:[4026531836]".
std::string ownPIDNamespace() {
  const std::string link = linkTarget("/proc/self/ns/pid");
  const auto start = link.find('[') + 1;
  return link.substr(start, link.find(']') - start);
}

/// Field 22 of /proc/pid/stat (proc(5)); empty when it cannot be read.
std::string startTime(const std::string& process) {
  std::ifstream file("/proc/" + process + "/stat");
  const std::string text(std::istreambuf_iterator<char>(file), {});
  // Field 2 is a name in parentheses, which may hold spaces and parentheses too.
  std::istringstream fields(text.substr(text.rfind(')') + 1));
  std::string field;
  for (int number = 3; number <= 22; ++number) fields >> field;
  return fields ? field : "";
}

/// No value without /proc, or when it shows the processes of another PID namespace.
std::optional<Writer> thisProcess() {
  Writer writer{.boot = firstLine("/proc/sys/kernel/random/boot_id"),
                .pidNamespace = ownPIDNamespace(),
                .process = std::to_string(getpid()),
                .start = startTime("self")};
  if (linkTarget("/proc/self") != writer.process || writer.start.empty()) return std::nullopt;
  return writer;
}

std::optional<Writer> writerOf(const std::string& name) {
  static const std::regex form(
      R"(\.orvane-([0-9a-f-]{36})-(\d+)-([1-9]\d{0,8})-(\d+)-[0-9A-F-]{36})");
  std::smatch match;
  if (!std::regex_match(name, match, form)) return std::nullopt;
  return Writer{.boot = match[1], .pidNamespace = match[2], .process = match[3], .start = match[4]};
}

bool isOlderThanThisBoot(const fs::path& path) {
  struct stat status = {};
  timespec sinceBoot = {};
  if (lstat(path.c_str(), &status) != 0) return false;
  clock_gettime(clockSinceBoot, &sinceBoot);
  return status.st_mtime < time(nullptr) - sinceBoot.tv_sec;
}

/// Asks by a signal first, for /proc may hide the processes of other users.
bool hasEnded(const Writer& writer) {
  if (kill(std::stoi(writer.process), 0) != 0 && errno == ESRCH) return true;
  const std::string start = startTime(writer.process);
  return !start.empty() && start != writer.start;
}

bool isLeftover(const fs::path& path, const Writer& own) {
  const auto writer = writerOf(path.filename());
  if (!writer) return false;
  if (writer->boot != own.boot) return isOlderThanThisBoot(path);
  return writer->pidNamespace == own.pidNamespace && hasEnded(*writer);
}

std::string prefix() {
  const auto own = thisProcess();
  if (!own) return ".orvane-";
  return ".orvane-" + own->boot + "-" + own->pidNamespace + "-" + own->process + "-" + own->start +
         "-";
}

}  // namespace

std::string unique() {
  static const std::string start = prefix();
  return start + UUID::random().string();
}

void removeLeftovers(const std::string& folder) {
  const auto own = thisProcess();
  if (!own) return;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    if (isLeftover(entry->path(), *own)) unlink(entry->path().c_str());
  }
}

}  // namespace orvane::TemporaryNames
