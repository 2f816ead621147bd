#pragma once

#include <unistd.h>

#include <utility>

namespace orvane::test {

/// Owner of a file descriptor; −1 is none.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() { close(); }

  int number() const { return number_; }
  void close() {
    if (number_ != -1) ::close(std::exchange(number_, -1));
  }

 private:
  int number_ = -1;
};

}  // namespace orvane::test
