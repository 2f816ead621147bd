#pragma once

#include <memory>

namespace orvane {

template <auto release>
struct Releaser {
  template <class T>
  void operator()(T* object) const {
    release(object);
  }
};

/// Owner of an object of a C library's making, or of what such a library hangs on a structure of
/// the caller's; `release` is the library's function that gives it back.
template <class T, auto release>
using Handle = std::unique_ptr<T, Releaser<release>>;

}  // namespace orvane
