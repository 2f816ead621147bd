#pragma once

#include <cstddef>

#include "platform/graphics/Image.h"

namespace orvane {

/// Converts rows of one picture's colours into an RGB space: relative colorimetric with black-point
/// compensation, alpha left alone. Not for use by several threads at once.
class ColorTransform {
 public:
  /// From `layout` (any, but not premultiplied) of `source`, into R, G, B, A of `target`; 8- or
  /// 16-bit components on both sides.
  ColorTransform(const ColorSpace& source, ChannelLayout layout, const ColorSpace& target,
                 int bitsPerComponent);

  /// Whether the profiles can be converted between at all.
  bool isPossible() const { return transform_ != nullptr; }

  /// Writes R, G and B of `count` pixels; the fourth component of each is left as it is.
  void convert(const void* row, void* rgba, std::size_t count) const;

 private:
  std::shared_ptr<void> transform_;
};

}  // namespace orvane
