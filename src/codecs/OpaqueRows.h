#pragma once

#include <array>
#include <optional>
#include <span>

#include "platform/graphics/RowRenderer.h"

namespace orvane {

/// The rows of one picture for encoders without alpha: 8-bit R, G, B and an unused fourth byte, in
/// the picture's rendering space. Rows that the picture stores in this form are not copied; others
/// are rendered when they are read, pixels that are not opaque on black. Refers to the picture,
/// which must outlive it. Not for use by several threads at once.
class OpaqueRows {
 public:
  static constexpr std::size_t maximumCount = 16;  ///< rows at once

  explicit OpaqueRows(const Image& image);

  std::size_t width() const { return image_.width; }
  std::size_t height() const { return image_.height; }
  const ColorSpacePtr& colorSpace() const { return colorSpace_; }

  /// Row `first` and those below, `count` of them or as many as there are; at most `maximumCount`.
  /// Valid until the next call.
  std::span<const std::uint8_t* const> read(std::size_t first, std::size_t count = maximumCount);

 private:
  const Image& image_;
  ColorSpacePtr colorSpace_;
  std::optional<RowRenderer> renderer_;  ///< for pictures in another form
  Bytes rendered_;
  std::array<const std::uint8_t*, maximumCount> rows_{};
};

}  // namespace orvane
