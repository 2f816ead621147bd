#pragma once

#include <memory>
#include <new>

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

/// Takes over an object that a C library has just made. Throws std::bad_alloc when it made none.
template <class Owner>
Owner owned(typename Owner::pointer made) {
  if (made == nullptr) throw std::bad_alloc();
  return Owner(made);
}

}  // namespace orvane
