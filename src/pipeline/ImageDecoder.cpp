#include "pipeline/ImageDecoder.h"

#include <array>
#include <memory>
#include <new>

#include "codecs/ImageSource.h"
#include "picture/ImageProcessingError.h"
#include "platform/graphics/BitmapContext.h"

namespace orvane::ImageDecoder {
namespace {

/// The transform of each EXIF orientation from 2 on; tx and ty are multiples of the picture's width
/// and height.
struct OrientationTransform {
  int a, b, c, d;
  int txWidths, txHeights, tyWidths, tyHeights;
};

constexpr int firstTurned = 2;
constexpr std::array<OrientationTransform, 7> orientationTransforms{{
    {-1, 0, 0, 1, 1, 0, 0, 0},   // 2: mirrored horizontally
    {-1, 0, 0, -1, 1, 0, 0, 1},  // 3: rotated 180°
    {1, 0, 0, -1, 0, 0, 0, 1},   // 4: mirrored vertically
    {0, -1, -1, 0, 0, 1, 1, 0},  // 5: transposed
    {0, -1, 1, 0, 0, 0, 1, 0},   // 6: to be turned 90° clockwise
    {0, 1, 1, 0, 0, 0, 0, 0},    // 7: transversed
    {0, 1, -1, 0, 0, 1, 0, 0},   // 8: to be turned 90° counter-clockwise
}};

}  // namespace

std::optional<Image> applyOrientation(int orientation, const Image& image) try {
  const int lastTurned = firstTurned + static_cast<int>(orientationTransforms.size()) - 1;
  if (orientation < firstTurned || orientation > lastTurned) return std::nullopt;
  const OrientationTransform& turn =
      orientationTransforms[static_cast<std::size_t>(orientation - firstTurned)];
  const bool swapsSides = turn.a == 0;

  auto context = BitmapContext::create(
      swapsSides ? image.height : image.width, swapsSides ? image.width : image.height,
      image.bitsPerComponent,
      image.alpha == AlphaKind::none ? BitmapContext::Alpha::noneSkipLast
                                     : BitmapContext::Alpha::premultipliedLast,
      renderingSpace(image.colorSpace));
  if (!context) return std::nullopt;
  const auto width = static_cast<std::int64_t>(image.width);
  const auto height = static_cast<std::int64_t>(image.height);
  context->concatenate({.a = turn.a,
                        .b = turn.b,
                        .c = turn.c,
                        .d = turn.d,
                        .tx = turn.txWidths * width + turn.txHeights * height,
                        .ty = turn.tyWidths * width + turn.tyHeights * height});
  context->draw(image);
  return std::move(*context).makeImage();
} catch (const std::bad_alloc&) {
  return std::nullopt;
}

DecodedImage decodeImageSource(ByteView fileData) try {
  const std::unique_ptr<ImageSource> source = ImageSource::create(fileData);
  const auto format = ImageFormat::fromTypeIdentifier(source->typeIdentifier());
  if (!format) throw ImageProcessingError::decodingFailed();
  DecodedImage decoded{*format, source->image(), source->frameCount()};
  if (auto upright = applyOrientation(source->orientation(), decoded.image)) {
    decoded.image = std::move(*upright);
  }
  return decoded;
} catch (const UnreadableImage&) {
  throw ImageProcessingError::decodingFailed();
} catch (const std::bad_alloc&) {
  throw ImageProcessingError::decodingFailed();
}

}  // namespace orvane::ImageDecoder
