#pragma once

#include <vector>

#include "platform/graphics/Image.h"

/// WebP files made by libwebp and libwebpmux. All throw std::runtime_error when those do not.
namespace orvane::test {

enum class WebPCoding { lossy, lossless };

/// A still of an 8-bit rgba picture. Lossless keeps the colours below alpha 0 too.
Bytes encodeWebP(const Image& image, WebPCoding coding);

/// A lossless still of one chunk whose header says that its alpha is not used (RFC 9649
/// clause 3.4).
Bytes withUnusedAlpha(ByteView webp);

struct WebPMetadata {
  Bytes icc;   ///< ICCP; none when empty
  Bytes exif;  ///< EXIF; none when empty
};

/// The same still with metadata around it.
Bytes withMetadata(ByteView webp, const WebPMetadata& metadata);

struct WebPFrame {
  Bytes still;
  int x = 0;  ///< offsets on the canvas, even
  int y = 0;
};

Bytes animateWebP(std::size_t width, std::size_t height, const std::vector<WebPFrame>& frames);

/// A still without metadata whose data lacks its last `count` bytes though every size in the file
/// is right.
Bytes withShortenedData(ByteView webp, std::size_t count);

}  // namespace orvane::test
