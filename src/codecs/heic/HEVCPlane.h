#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "platform/foundation/Handle.h"

namespace orvane {

/// Memory for one plane of an HEVC picture while it is being decoded, that can tell afterwards
/// whether all of it has been decoded. Decoders do not: damage often looks like the end of a slice,
/// and what is missing after it is not missed.
class HEVCPlane {
 public:
  /// Takes memory and marks it as not decoded. `width` and `height` in samples, which take two
  /// bytes when `bitDepth`, up to 16, is more than 8. Throws std::bad_alloc.
  HEVCPlane(std::size_t width, std::size_t height, int bitDepth);

  std::uint8_t* memory() const { return memory_.get(); }
  std::size_t bytesPerRow() const { return bytesPerRow_; }

  /// Whether every coding tree block has been decoded. For planes as large as luma.
  bool isComplete() const;

 private:
  template <class Sample>
  Sample* row(std::size_t y) const {
    return reinterpret_cast<Sample*>(memory_.get() + y * bytesPerRow_);
  }
  template <class Sample>
  void makeBlank();
  template <class Sample>
  bool isBlankBlock(std::size_t left, std::size_t top) const;
  template <class Sample>
  bool hasBlankBlock() const;

  std::size_t width_;
  std::size_t height_;
  int bitDepth_;
  std::size_t bytesPerRow_;
  Handle<std::uint8_t, std::free> memory_;
};

}  // namespace orvane
