#include "pipeline/ImageCompressor.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <new>

#include "codecs/JXLEncoder.h"
#include "codecs/PNGQuantEncoder.h"
#include "codecs/PNGWriter.h"
#include "codecs/WebPEncoder.h"
#include "pipeline/ColorProfile.h"
#include "pipeline/EncodingStrategy.h"
#include "pipeline/ImageAnalyzer.h"
#include "pipeline/ImageDecoder.h"
#include "pipeline/ImageProcessingError.h"
#include "pipeline/NativeImageIOEncoder.h"
#include "platform/foundation/FileError.h"
#include "platform/foundation/Files.h"

namespace orvane::ImageCompressor {
namespace {

/// From this perceptual quality on a JPEG becomes a JPEG XL without loss.
constexpr double transcodingQuality = 90;

/// One decoded picture and everything that is known of it.
struct Work {
  ImageDecoder::DecodedImage source;
  RGBABuffer buffer;
  ImageCharacteristics characteristics;
  ImageFormat format;
};

int quantizationSpeed(EncodingPlan::Effort effort) {
  switch (effort) {
    case EncodingPlan::Effort::fast:
      return 8;
    case EncodingPlan::Effort::balanced:
      return 4;
    case EncodingPlan::Effort::thorough:
      return 3;
  }
  return 4;
}

Bytes encodePalette(const RGBABuffer& buffer, const EncodingPlan& plan) {
  const PNGQuantEncoder::LiqAttr attributes(liq_attr_create());
  if (!attributes) throw ImageProcessingError::encodingFailed(ImageFormat::png);
  const auto target = static_cast<int>(std::clamp(std::round(plan.quality), 0.0, 100.0));
  liq_set_quality(attributes.get(), 0, target);
  liq_set_speed(attributes.get(), quantizationSpeed(plan.effort));
  const auto quantized = PNGQuantEncoder::quantize(attributes.get(), buffer.pixels, buffer.width,
                                                   buffer.height, plan.ditheringLevel);
  return PNGWriter::writeIndexedPNG(buffer.width, buffer.height, quantized.indices,
                                    quantized.palette,
                                    ColorProfile::embeddableICC(*buffer.colorSpace));
}

/// Any failure of the palette path leaves the lossless one.
Bytes encodePaletteOrLossless(const RGBABuffer& buffer, const EncodingPlan& plan) try {
  return encodePalette(buffer, plan);
} catch (const std::exception&) {
  return PNGQuantEncoder::encodeLossless(buffer, plan);
}

/// Whether the format is encoded from the buffer and not from the decoded picture.
bool encodesBuffer(ImageFormat format) {
  return format == ImageFormat::png || format == ImageFormat::webp || format == ImageFormat::jxl;
}

Bytes encode(const Work& work, const EncodingPlan& plan, bool losslessPNG) {
  switch (work.format) {
    case ImageFormat::png:
      return losslessPNG ? PNGQuantEncoder::encodeLossless(work.buffer, plan)
                         : encodePaletteOrLossless(work.buffer, plan);
    case ImageFormat::webp:
      return WebPEncoder::encode(work.buffer, plan, work.characteristics);
    case ImageFormat::jxl:
      return JXLEncoder::encode(work.buffer, work.buffer.hasAlpha, plan);
    case ImageFormat::jpeg:
    case ImageFormat::heic:
    case ImageFormat::avif:
      return NativeImageIOEncoder::encode(work.source.image, work.buffer.hasAlpha, work.format,
                                          plan);
  }
  throw ImageProcessingError::encodingFailed(work.format);
}

/// The second attempt: the plan with another mode. Nothing when it fails.
std::optional<Bytes> encodeAlternative(const Work& work, const EncodingPlan& plan) try {
  EncodingPlan alternative = plan;
  if (plan.losslessCandidate) {
    alternative.mode = EncodingPlan::Lossless{};
  } else {
    alternative.mode = EncodingPlan::Lossy{plan.losslessQuality};
  }
  return encode(work, alternative, plan.losslessCandidate);
} catch (const std::exception&) {
  return std::nullopt;
}

Bytes encodeSmallest(const Work& work, const EncodingPlan& plan) {
  Bytes primary = encode(work, plan, plan.preferLossless);
  if (plan.singlePass) return primary;
  std::optional<Bytes> alternative = encodeAlternative(work, plan);
  return alternative && alternative->size() < primary.size() ? std::move(*alternative)
                                                             : std::move(primary);
}

Bytes compressed(ByteView file, ImageFormat format, double quality) {
  ImageDecoder::DecodedImage source = ImageDecoder::decodeImageSource(file);
  RGBABuffer buffer(source.image);
  const ImageCharacteristics characteristics = ImageAnalyzer::analyze(buffer);
  const EncodingPlan plan = EncodingStrategy::plan(characteristics, format, quality);
  if (format == ImageFormat::jxl && source.format == ImageFormat::jpeg &&
      quality >= transcodingQuality) {
    if (auto transcoded = JXLEncoder::transcodeJPEG(file, ordinal(plan.effort) + 5)) {
      return std::move(*transcoded);
    }
  }
  // Only one of the two pictures is encoded; the memory of the other goes first.
  if (encodesBuffer(format)) {
    source.image.pixels.reset();
  } else {
    buffer.releasePixels();
  }
  return encodeSmallest({std::move(source), std::move(buffer), characteristics, format}, plan);
}

std::string defaultFilename(const std::string& path, ImageFormat format) {
  return std::string(FileURL::fromPath(path).baseName()) + "." +
         std::string(format.fileExtension());
}

ImageCompressionResult failure(const std::string& path, const std::string& description) {
  return {.path = path, .originalSizeBytes = fileSize(path), .error = description};
}

}  // namespace

std::int64_t fileSize(const std::string& path) { return Files::size(path).value_or(0); }

ImageCompressionResult compress(const std::string& path, const FileURL& to, ImageFormat format,
                                double quality,
                                const std::optional<std::string>& destinationFilename) try {
  const Bytes file = Files::readWhole(FileURL::fromPath(path).path());
  const Bytes output = compressed(file, format, quality);
  const FileURL destination =
      to.appending(destinationFilename.value_or(defaultFilename(path, format)));
  Files::writeAtomically(destination.path(), output);

  const auto originalSize = static_cast<std::int64_t>(file.size());
  const auto compressedSize = static_cast<std::int64_t>(output.size());
  return {.path = path,
          .originalSizeBytes = originalSize,
          .compressedSizeBytes = compressedSize,
          .ratio = 1 - static_cast<double>(compressedSize) /
                           static_cast<double>(std::max<std::int64_t>(originalSize, 1)),
          .destination = destination.path()};
} catch (const LocalizedError& error) {
  return failure(path, error.localizedDescription());
} catch (const std::bad_alloc&) {
  return failure(path, FileError(ENOMEM).localizedDescription());
} catch (const std::exception& error) {
  return failure(path, error.what());
}

}  // namespace orvane::ImageCompressor
