#pragma once

#include <cstddef>
#include <random>
#include <vector>

namespace orvane::fuzz {

/// Choices of a mutator.
class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}

  /// 0 … count − 1; `count` is at least 1.
  std::size_t below(std::size_t count) {
    return std::uniform_int_distribution<std::size_t>(0, count - 1)(engine_);
  }

  /// One element of a container that is not empty.
  template <class Elements>
  auto& oneOf(Elements& elements) {
    return elements[below(std::size(elements))];
  }

 private:
  std::minstd_rand engine_;
};

}  // namespace orvane::fuzz
