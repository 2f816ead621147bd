#include "workers/Sandbox.h"

// Sanitizers make calls of their own, and open files, at any time.
#if defined(__linux__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

#include <fcntl.h>
#include <linux/landlock.h>
#include <sched.h>
#include <seccomp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "platform/foundation/Descriptor.h"
#include "platform/foundation/Handle.h"

namespace orvane::Sandbox {
namespace {

/// Landlock (kernel 5.13): a set of rules that handles every way to a file and allows none.
void denyFiles() {
  landlock_ruleset_attr rules{};
  rules.handled_access_fs = (LANDLOCK_ACCESS_FS_MAKE_SYM << 1) - 1;  // all rights of version 1
  const Descriptor set(
      static_cast<int>(syscall(SYS_landlock_create_ruleset, &rules, sizeof rules, 0)));
  if (set) syscall(SYS_landlock_restrict_self, set.number(), 0);
}

using Filter = Handle<void, seccomp_release>;

/// The system calls that the codec libraries, the C library and the work itself were seen to make.
constexpr int allowedCalls[]{
    // The work: messages, the source, the output.
    SCMP_SYS(read), SCMP_SYS(readv), SCMP_SYS(write), SCMP_SYS(writev), SCMP_SYS(close),
    SCMP_SYS(lseek), SCMP_SYS(memfd_create), SCMP_SYS(sendmsg), SCMP_SYS(recvmsg), SCMP_SYS(poll),
    SCMP_SYS(ppoll),
    // Memory.
    SCMP_SYS(mmap), SCMP_SYS(munmap), SCMP_SYS(mremap), SCMP_SYS(mprotect), SCMP_SYS(madvise),
    SCMP_SYS(brk), SCMP_SYS(getrlimit), SCMP_SYS(setrlimit), SCMP_SYS(getrusage), SCMP_SYS(sysinfo),
    // Threads.
    SCMP_SYS(futex), SCMP_SYS(set_robust_list), SCMP_SYS(rseq), SCMP_SYS(membarrier),
    SCMP_SYS(gettid), SCMP_SYS(getpid), SCMP_SYS(sched_yield), SCMP_SYS(sched_getaffinity),
    SCMP_SYS(exit), SCMP_SYS(exit_group),
    // Signals.
    SCMP_SYS(rt_sigaction), SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigreturn), SCMP_SYS(sigaltstack),
    // Time and chance.
    SCMP_SYS(clock_gettime), SCMP_SYS(clock_nanosleep), SCMP_SYS(nanosleep), SCMP_SYS(gettimeofday),
    SCMP_SYS(getrandom)};

/// Seccomp: every other call fails with EPERM. A new thread is allowed, a new process is not;
/// clone3, whose flags a filter cannot see, does not exist, so that the C library falls back to
/// clone.
void filterSystemCalls() {
  const Filter filter(seccomp_init(SCMP_ACT_ERRNO(EPERM)));
  if (!filter) return;
  for (const int call : allowedCalls) seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, call, 0);
  seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, SCMP_SYS(clone), 1,
                   SCMP_A0(SCMP_CMP_MASKED_EQ, CLONE_THREAD, CLONE_THREAD));
  // Limits and signals, abort()'s among them: of this process only.
  seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, SCMP_SYS(prlimit64), 1, SCMP_A0(SCMP_CMP_EQ, 0));
  seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, SCMP_SYS(tgkill), 1,
                   SCMP_A0(SCMP_CMP_EQ, static_cast<scmp_datum_t>(getpid())));
  // The process's title.
  seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, SCMP_SYS(prctl), 1,
                   SCMP_A0(SCMP_CMP_EQ, PR_SET_NAME));
  seccomp_rule_add(filter.get(), SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), 0);
  seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, SCMP_SYS(fcntl), 1,
                   SCMP_A1(SCMP_CMP_EQ, F_ADD_SEALS));
  seccomp_load(filter.get());
}

}  // namespace

void enter() {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  prctl(PR_SET_DUMPABLE, 0);  // no core dump, and no other process of the user's looks in
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  denyFiles();
  filterSystemCalls();
}

}  // namespace orvane::Sandbox

#else

namespace orvane::Sandbox {
void enter() {}
}  // namespace orvane::Sandbox

#endif
