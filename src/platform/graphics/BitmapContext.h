#pragma once

#include <optional>

#include "platform/graphics/Image.h"

namespace orvane {

/// (x, y) goes to (a·x + c·y + tx, b·x + d·y + ty); the origin is the lower left corner.
/// Here a, b, c, d are 0, 1 or −1 and make a turn or a mirror image.
struct AffineTransform {
  int a = 1;
  int b = 0;
  int c = 0;
  int d = 1;
  std::int64_t tx = 0;
  std::int64_t ty = 0;
};

/// Memory to draw one picture into, as premultiplied R, G, B, A.
class BitmapContext {
 public:
  enum class Alpha {
    noneSkipLast,       ///< the result is opaque; what is drawn is composed with what lies there
    premultipliedLast,  ///< the result has alpha
  };

  /// An undrawn context, or nothing when it cannot be made: a space that cannot be
  /// rendered into, or no memory. `bitsPerComponent` is 8 or 16 (native byte order).
  static std::optional<BitmapContext> create(std::size_t width, std::size_t height,
                                             int bitsPerComponent, Alpha alpha,
                                             ColorSpacePtr colorSpace);

  /// Fills the whole context with opaque white. Before any drawing.
  void fillWhite() { background_ = Background::white; }

  /// What is drawn from now on is turned by this transform.
  void concatenate(const AffineTransform& transform) { transform_ = transform; }

  /// Draws the whole of `image`, one pixel to one pixel. Once.
  void draw(const Image& image);

  /// What has been drawn. The context is empty afterwards.
  Image makeImage() &&;

 private:
  enum class Background { clear, white };

  BitmapContext() = default;

  Image canvas_;
  std::uint8_t* pixels_ = nullptr;  ///< those of `canvas_`
  Background background_ = Background::clear;
  AffineTransform transform_;
};

}  // namespace orvane
