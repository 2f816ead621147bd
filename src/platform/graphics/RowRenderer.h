#pragma once

#include <cstddef>
#include <memory>

#include "platform/graphics/Image.h"

namespace orvane {

/// Renders the rows of one picture, one at a time, as R, G, B, A of 8 or 16 bits in a given RGB
/// space. Numbers of the same space stay as they are. Other spaces are converted relative
/// colorimetric with black-point compensation; uncalibrated CMYK becomes (255 − C)(255 − K) / 255
/// and so on. Premultiplied colours are c·a/max, rounded to nearest. The deeper of the two depths
/// is used for all of this. Not for use by several threads at once.
class RowRenderer {
 public:
  /// Whether the rendered colours are multiplied by alpha.
  enum class AlphaForm { premultiplied, straight };

  /// `target` is an RGB space that supports output; `bitsPerComponent` is 8 or 16.
  RowRenderer(const Image& image, const ColorSpacePtr& target, int bitsPerComponent,
              AlphaForm alphaForm);
  ~RowRenderer();

  /// Writes row `y`: width × 4 components of the constructor's depth, 16-bit ones in native order.
  void render(std::size_t y, void* out);

 private:
  struct Steps;
  std::unique_ptr<Steps> steps_;
};

/// All rows of `image` in `target`, packed, with straight alpha where it has alpha.
Image rendered(const Image& image, const ColorSpacePtr& target, int bitsPerComponent);

}  // namespace orvane
