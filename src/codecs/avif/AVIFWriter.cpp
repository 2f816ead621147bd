#include <algorithm>
#include <new>
#include <optional>

#include "codecs/ImageDestination.h"
#include "codecs/avif/AVIFLibrary.h"
#include "codecs/avif/AVIFSettings.h"
#include "platform/foundation/Memory.h"
#include "platform/graphics/RowRenderer.h"

namespace orvane {
namespace {

using AVIFSettings::Content;
using AVIFSettings::Tuning;

/// Luma, two chroma samples and alpha, of at most 16 bits each.
constexpr std::size_t planeBytesPerPixel = 8;

/// Rows that are rendered before they are converted.
constexpr std::size_t stripRows = 32;

void require(avifResult result) {
  if (result == AVIF_RESULT_OUT_OF_MEMORY) throw std::bad_alloc();
  if (result != AVIF_RESULT_OK) throw UnwritableImage(avifResultToString(result));
}

/// Converts `strip` into the rows of `picture` that begin with row `first`.
void convertStrip(const avifRGBImage& strip, avifImage& picture, std::size_t first) {
  const AVIFLibrary::Picture rows =  // share the memory of `picture`
      AVIFLibrary::makePicture(0, 0, picture.depth, picture.yuvFormat);
  const avifCropRect place{0, static_cast<std::uint32_t>(first), strip.width, strip.height};
  require(avifImageSetViewRect(rows.get(), &picture, &place));
  const avifResult result = avifImageRGBToYUV(rows.get(), &strip);
  // The conversion marks the planes as owned by `rows`, but they belong to the picture.
  rows->imageOwnsYUVPlanes = rows->imageOwnsAlphaPlane = AVIF_FALSE;
  require(result);
}

void describeColors(avifImage& picture, const ColorSpace& colorSpace) {
  picture.matrixCoefficients = AVIF_MATRIX_COEFFICIENTS_BT601;
  picture.yuvRange = AVIF_RANGE_FULL;
  if (const auto codePoints = colorSpace.codePoints()) {
    picture.colorPrimaries = codePoints->primaries;
    picture.transferCharacteristics = codePoints->transfer;
  } else {
    AVIFLibrary::setICCProfile(picture, colorSpace.iccData());
  }
}

/// `image` in its rendering space as planes for AV1.
AVIFLibrary::Picture convert(const Image& image, Content content) {
  const ColorSpacePtr colorSpace = renderingSpace(image.colorSpace);
  AVIFLibrary::Picture picture = AVIFLibrary::makePicture(
      static_cast<std::uint32_t>(image.width), static_cast<std::uint32_t>(image.height),
      AVIFSettings::depth(content), AVIFSettings::pixelFormat);
  describeColors(*picture, *colorSpace);
  // libavif 0.11 aborts when an allocation of planes fails; probe first.
  Memory::require(image.width * image.height * planeBytesPerPixel);
  require(avifImageAllocatePlanes(
      picture.get(), image.alpha == AlphaKind::none ? AVIF_PLANES_YUV : AVIF_PLANES_ALL));

  RowRenderer renderer(image, colorSpace, image.bitsPerComponent, RowRenderer::AlphaForm::straight);
  avifRGBImage strip{};
  avifRGBImageSetDefaults(&strip, picture.get());
  strip.depth = static_cast<std::uint32_t>(image.bitsPerComponent);
  strip.ignoreAlpha = image.alpha == AlphaKind::none;
  strip.rowBytes = strip.width * avifRGBImagePixelSize(&strip);
  const MutablePixelMemory rendered = makePixelMemory(strip.rowBytes * stripRows);
  strip.pixels = rendered.get();
  for (std::size_t first = 0; first < image.height; first += stripRows) {
    const std::size_t count = std::min(stripRows, image.height - first);
    for (std::size_t i = 0; i < count; ++i) {
      renderer.render(first + i, rendered.get() + i * strip.rowBytes);
    }
    strip.height = static_cast<std::uint32_t>(count);
    convertStrip(strip, *picture, first);
  }
  return picture;
}

/// The file; absent when libaom does not know the tuning or another option.
std::optional<Bytes> encode(const avifImage& picture, double quality, Content content,
                            Tuning tuning) {
  const AVIFLibrary::Encoder encoder = AVIFLibrary::makeEncoder();
  encoder->codecChoice = AVIF_CODEC_CHOICE_AOM;
  encoder->maxThreads = 1;
  encoder->speed = AVIFSettings::speed;
  AVIFLibrary::setQuantizers(*encoder, {.color = AVIFSettings::colorQuantizer(quality, tuning),
                                        .alpha = AVIFSettings::alphaQuantizer});
  if (tuning == Tuning::imageQuality) AVIFLibrary::setCodecOption(*encoder, "color:tune", "iq");
  if (content == Content::screen) {
    AVIFLibrary::setCodecOption(*encoder, "color:tune-content", "screen");
  }
  // Searching for blocks to copy takes several times as long, and libaom does it for photographs
  // with smooth parts too.
  AVIFLibrary::setCodecOption(*encoder, "enable-intrabc", "0");
  AVIFLibrary::Output output;
  const avifResult result = avifEncoderWrite(encoder.get(), &picture, &output.data);
  if (result == AVIF_RESULT_INVALID_CODEC_SPECIFIC_OPTION) return std::nullopt;
  require(result);
  return Bytes(output.data.data, output.data.data + output.data.size);
}

Bytes encode(const Image& image, const PictureMeasurements& measurements, double quality) {
  // Screens are coded in 8 bits, which are too few for deep pictures.
  const Content content = image.bitsPerComponent > 8
                              ? Content::natural
                              : AVIFSettings::contentOf(measurements.characteristics);
  const AVIFLibrary::Picture picture = convert(image, content);
  for (const Tuning tuning : {Tuning::imageQuality, Tuning::structuralSimilarity}) {
    if (auto file = encode(*picture, quality, content, tuning)) return *std::move(file);
  }
  throw UnwritableImage("libaom refuses its options");
}

}  // namespace

const ImageDestination avifDestination{.alpha = ImageDestination::Alpha::kept,
                                       // Deliberately never the best setting.
                                       .maximumQuality = 0.99,
                                       .encode = encode};

}  // namespace orvane
