#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "platform/foundation/Handle.h"

namespace orvane {

/// Memory for one plane of an HEVC picture, which tells after decoding whether all of it was
/// written. Decoders do not tell: damage often looks like the end of a slice, and they do not
/// report that blocks after it are missing.
class HEVCPlane {
 public:
  /// Takes memory and marks it as not decoded. `width` and `height` are in samples. `bitDepth` is
  /// at most 16; a sample takes two bytes when it is more than 8. Throws std::bad_alloc.
  HEVCPlane(std::size_t width, std::size_t height, int bitDepth);

  std::uint8_t* memory() const { return memory_.get(); }
  std::size_t bytesPerRow() const { return bytesPerRow_; }

  /// Whether every coding tree block has been decoded. Only for luma and planes of its size.
  bool isComplete() const;

 private:
  template <class Sample>
  void makeBlank();
  bool isBlank(std::size_t x, std::size_t y) const;
  bool isBlankBlock(std::size_t left, std::size_t top) const;

  std::size_t width_;
  std::size_t height_;
  int bitDepth_;
  std::size_t bytesPerRow_;
  Handle<std::uint8_t, std::free> memory_;
};

}  // namespace orvane
