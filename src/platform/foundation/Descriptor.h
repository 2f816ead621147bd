#pragma once

#include <unistd.h>

#include <utility>

#include "platform/foundation/Bytes.h"

namespace orvane {

/// Owner of a file descriptor, or of none (−1).
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    const Descriptor former(std::exchange(number_, std::exchange(other.number_, -1)));
    return *this;
  }
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }

  int number() const { return number_; }

  /// Writes all of them. Throws FileError.
  void write(ByteView bytes) const;

  /// Throws FileError where the system has lost what was written.
  void close();

  explicit operator bool() const { return number_ >= 0; }

 private:
  int number_ = -1;
};

}  // namespace orvane
