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

/// Owner of an object that a C library made, or of the contents that it attached to a structure of
/// the caller's. `release` is the library's function that frees it.
template <class T, auto release>
using Handle = std::unique_ptr<T, Releaser<release>>;

}  // namespace orvane
