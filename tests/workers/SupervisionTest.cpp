#include "workers/Supervision.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

namespace orvane {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;

/// A process that runs a function until it is killed.
class Child {
 public:
  explicit Child(void (*work)()) : process_(fork()) {
    while (process_ == 0) work();
  }
  ~Child() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  pid_t process() const { return process_; }

 private:
  pid_t process_;
};

void spin() {}
void sleepForEver() { pause(); }

void waitUntilExceeded(Supervision& supervision) {
  while (!supervision.isExceeded()) std::this_thread::sleep_for(milliseconds(5));
}

TEST(Supervision, endsTheTimeOfAProcessThatWorksForTooLong) {
  const Child child(spin);
  Supervision supervision(child.process(), hours(1));
  supervision.allow(1);
  EXPECT_FALSE(supervision.isExceeded());
  waitUntilExceeded(supervision);
}

TEST(Supervision, countsFromItsBeginning) {
  const Child child(spin);
  {
    Supervision first(child.process(), hours(1));
    first.allow(1);
    waitUntilExceeded(first);
  }
  Supervision second(child.process(), hours(1));
  second.allow(1000);
  EXPECT_FALSE(second.isExceeded());
}

TEST(Supervision, endsTheTimeOfAProcessThatSleeps) {
  const Child child(sleepForEver);
  Supervision supervision(child.process(), milliseconds(50));
  supervision.allow(1000);
  waitUntilExceeded(supervision);
}

}  // namespace
}  // namespace orvane
