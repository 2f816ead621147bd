#pragma once

#include <cstddef>

#include "platform/graphics/Image.h"

namespace orvane {

/// Converts rows of one picture's colours into an RGB space: relative colorimetric with black-point
/// compensation, without touching alpha. Not for use by several threads at once.
class ColorTransform {
 public:
  /// From `layout` of `source`, not premultiplied, into R, G, B, A of `target`. The components have
  /// 8 or 16 bits, the same number on both sides.
  ColorTransform(const ColorSpace& source, ChannelLayout layout, const ColorSpace& target,
                 int bitsPerComponent);

  /// Whether the profiles can be converted between at all.
  bool isPossible() const { return transform_ != nullptr; }

  /// Writes R, G and B of `count` pixels and leaves the fourth component of each as it is.
  void convert(const void* row, void* rgba, std::size_t count) const;

 private:
  std::shared_ptr<void> transform_;
};

}  // namespace orvane
