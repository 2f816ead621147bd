#include <algorithm>
#include <deque>
#include <new>

#include "codecs/ImageDestination.h"
#include "codecs/avif/AVIFLibrary.h"
#include "codecs/avif/AVIFSettings.h"
#include "platform/foundation/Memory.h"
#include "platform/foundation/Parallel.h"
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

/// Renders strips of a picture and converts them into planes. One thread.
class StripConverter {
 public:
  /// Refers to both pictures.
  StripConverter(const Image& image, const ColorSpacePtr& colorSpace, avifImage& picture)
      : renderer_(image, colorSpace, image.bitsPerComponent, RowRenderer::AlphaForm::straight),
        picture_(picture) {
    avifRGBImageSetDefaults(&strip_, &picture);
    strip_.depth = static_cast<std::uint32_t>(image.bitsPerComponent);
    strip_.ignoreAlpha = image.alpha == AlphaKind::none;
    strip_.rowBytes = strip_.width * avifRGBImagePixelSize(&strip_);
    rendered_ = makePixelMemory(strip_.rowBytes * stripRows);
    strip_.pixels = rendered_.get();
  }

  /// The rows that begin with row `first`.
  void convert(std::size_t first) {
    const std::size_t count = std::min(stripRows, picture_.height - first);
    for (std::size_t i = 0; i < count; ++i) {
      renderer_.render(first + i, strip_.pixels + i * strip_.rowBytes);
    }
    strip_.height = static_cast<std::uint32_t>(count);
    const AVIFLibrary::Picture rows =  // share the memory of the picture
        AVIFLibrary::makePicture(0, 0, picture_.depth, picture_.yuvFormat);
    const avifCropRect place{0, static_cast<std::uint32_t>(first), strip_.width, strip_.height};
    require(avifImageSetViewRect(rows.get(), &picture_, &place));
    const avifResult result = avifImageRGBToYUV(rows.get(), &strip_);
    // The conversion marks the planes as owned by `rows`, but they belong to the picture.
    rows->imageOwnsYUVPlanes = rows->imageOwnsAlphaPlane = AVIF_FALSE;
    require(result);
  }

 private:
  RowRenderer renderer_;
  avifImage& picture_;
  avifRGBImage strip_{};
  MutablePixelMemory rendered_;
};

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
AVIFLibrary::Picture convert(const Image& image, Content content, int threads) {
  const ColorSpacePtr colorSpace = renderingSpace(image.colorSpace);
  AVIFLibrary::Picture picture = AVIFLibrary::makePicture(
      static_cast<std::uint32_t>(image.width), static_cast<std::uint32_t>(image.height),
      AVIFSettings::depth(content), AVIFSettings::pixelFormat);
  describeColors(*picture, *colorSpace);
  // libavif 0.11 aborts when an allocation of planes fails; probe first.
  Memory::require(image.width * image.height * planeBytesPerPixel);
  require(avifImageAllocatePlanes(
      picture.get(), image.alpha == AlphaKind::none ? AVIF_PLANES_YUV : AVIF_PLANES_ALL));

  std::deque<StripConverter> converters;
  for (int i = 0; i < threads; ++i) converters.emplace_back(image, colorSpace, *picture);
  inParallel((image.height + stripRows - 1) / stripRows, threads,
             [&](std::size_t strip, std::size_t thread) {
               converters[thread].convert(strip * stripRows);
             });
  return picture;
}

/// libaom codes each tile on one thread. It fails when it gets no thread that it wants.
void setThreads(avifEncoder& encoder, const avifImage& picture, int threads) {
  const auto tiles = AVIFSettings::tiles(picture.width, picture.height);
  encoder.tileColsLog2 = tiles.columnsLog2;
  encoder.tileRowsLog2 = tiles.rowsLog2;
  encoder.maxThreads = 1 + startableThreads(threads - 1);
  // Threads that share the rows of a tile change the bytes; libavif asks for them by default.
  AVIFLibrary::setCodecOption(encoder, "row-mt", "0");
}

Bytes encode(const avifImage& picture, double quality, Content content, int threads) {
  const AVIFLibrary::Encoder encoder = AVIFLibrary::makeEncoder();
  encoder->codecChoice = AVIF_CODEC_CHOICE_AOM;
  encoder->speed = AVIFSettings::speed;
  setThreads(*encoder, picture, threads);
  const Tuning tuning = AVIFSettings::bestTuning();
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
  require(avifEncoderWrite(encoder.get(), &picture, &output.data));
  return Bytes(output.data.data, output.data.data + output.data.size);
}

Bytes encode(const Image& image, const PictureMeasurements& measurements, double quality,
             int threads) {
  // Screens are coded in 8 bits, which are too few for deep pictures.
  const Content content = image.bitsPerComponent > 8
                              ? Content::natural
                              : AVIFSettings::contentOf(measurements.characteristics);
  const AVIFLibrary::Picture picture = convert(image, content, threads);
  return encode(*picture, quality, content, threads);
}

std::span<const QualityPoint> sampleScores() {
  return AVIFSettings::bestTuning() == Tuning::imageQuality
             ? QualityTables::avifSampleScoreTunedForImages()
             : QualityTables::avifSampleScore();
}

Bytes encodeSample(const Image& image, const PictureMeasurements& measurements, double quality) {
  return encode(image, measurements, quality, 1);
}

}  // namespace

const ImageDestination avifDestination{
    .alpha = ImageDestination::Alpha::kept,
    // Deliberately never the best setting.
    .maximumQuality = 0.99,
    .encode = encode,
    .encodeSample = encodeSample,
    // libaom codes pictures of 720 rows and more in another way.
    .sampleShape = {.bandOfSmall = 128, .bandOfLarge = 256, .mostPixels = 600'000},
    .sampleScores = sampleScores};

}  // namespace orvane
