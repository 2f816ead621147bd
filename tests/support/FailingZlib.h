#pragma once

namespace orvane::test {

/// Makes the next `count` calls of compress2 on this thread report that there is no memory. Calls
/// succeed again when it is gone.
class FailingZlib {
 public:
  explicit FailingZlib(int count);
  ~FailingZlib();
  FailingZlib(const FailingZlib&) = delete;
  FailingZlib& operator=(const FailingZlib&) = delete;
};

}  // namespace orvane::test
