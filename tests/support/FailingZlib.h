#pragma once

namespace orvane::test {

/// While it lives, zlib does not compress for this thread: its next calls of compress2, `count` of
/// them, find no memory.
class FailingZlib {
 public:
  explicit FailingZlib(int count);
  ~FailingZlib();
  FailingZlib(const FailingZlib&) = delete;
  FailingZlib& operator=(const FailingZlib&) = delete;
};

}  // namespace orvane::test
