#include "workers/Sandbox.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

namespace orvane {
namespace {

#if defined(__linux__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

/// Ends the process with the number of the first thing that is possible in the sandbox and should
/// not be, or 0.
[[noreturn]] void tryToLeave() {
  const int folder = open("/", O_RDONLY | O_DIRECTORY);
  Sandbox::enter();
  char name[] = "/bin/true";
  char* const arguments[]{name, nullptr};
  struct stat status {};
  rlimit limit{};
  if (open("/etc/passwd", O_RDONLY) >= 0) _exit(1);
  if (openat(folder, "etc/passwd", O_RDONLY) >= 0) _exit(2);
  if (open("/tmp/orvane-sandbox-test", O_WRONLY | O_CREAT, 0600) >= 0) _exit(3);
  if (socket(AF_INET, SOCK_STREAM, 0) >= 0) _exit(4);
  if (socket(AF_UNIX, SOCK_STREAM, 0) >= 0) _exit(5);
  if (fork() >= 0) _exit(6);
  if (execv(name, arguments) == 0) _exit(7);
  if (kill(getppid(), 0) == 0) _exit(8);
  if (tgkill(getppid(), getppid(), 0) == 0) _exit(11);
  if (prlimit(getppid(), RLIMIT_NOFILE, nullptr, &limit) == 0) _exit(12);
  if (prctl(PR_SET_DUMPABLE, 1) == 0) _exit(13);
  if (stat("/etc/passwd", &status) == 0) _exit(9);
  if (unlink("/tmp/orvane-sandbox-test") == 0) _exit(10);
  _exit(0);
}

TEST(SandboxDeathTest, hasNoFilesNoNetworkAndNoOtherProcesses) {
  EXPECT_EXIT(tryToLeave(), testing::ExitedWithCode(0), "");
}

[[noreturn]] void work() {
  Sandbox::enter();
  int sum = 0;
  std::thread([&] { sum = std::string(1 << 22, 'a').size() > 0 ? 1 : 0; }).join();
  _exit(sum == 1 ? 0 : 1);
}

TEST(SandboxDeathTest, hasMemoryAndThreads) { EXPECT_EXIT(work(), testing::ExitedWithCode(0), ""); }

TEST(SandboxDeathTest, letsAProcessAbort) {
  EXPECT_EXIT(
      {
        Sandbox::enter();
        std::abort();
      },
      testing::KilledBySignal(SIGABRT), "");
}

#endif

}  // namespace
}  // namespace orvane
