#include "pipeline/ImageCompressor.h"

#include <algorithm>
#include <cerrno>
#include <new>

#include "codecs/jxl/JXLEncoder.h"
#include "codecs/png/PNGQuantEncoder.h"
#include "codecs/png/PalettePNG.h"
#include "codecs/webp/WebPEncoder.h"
#include "picture/ImageProcessingError.h"
#include "pipeline/EncodingAttempts.h"
#include "pipeline/EncodingStrategy.h"
#include "pipeline/ImageAnalyzer.h"
#include "pipeline/ImageDecoder.h"
#include "pipeline/NativeImageIOEncoder.h"
#include "platform/foundation/FileError.h"
#include "platform/foundation/Files.h"

namespace orvane::ImageCompressor {
namespace {

using EncodingAttempts::PNGForm;

/// From this perceptual quality on a JPEG becomes a JPEG XL without loss.
constexpr double transcodingQuality = 90;

/// One decoded picture and everything that is known of it.
struct Work {
  Image image;
  RGBABuffer buffer;
  ImageCharacteristics characteristics;
  ImageFormat format;
};

/// Whether the format is encoded from the buffer and not from the decoded picture.
bool encodesBuffer(ImageFormat format) {
  return format == ImageFormat::png || format == ImageFormat::webp || format == ImageFormat::jxl;
}

Bytes encode(const Work& work, const EncodingPlan& plan, PNGForm pngForm) {
  switch (work.format) {
    case ImageFormat::png:
      return pngForm == PNGForm::truecolor ? PNGQuantEncoder::encodeLossless(work.buffer, plan)
                                           : PalettePNG::encode(work.buffer, plan);
    case ImageFormat::webp:
      return WebPEncoder::encode(work.buffer, plan, work.characteristics);
    case ImageFormat::jxl:
      return JXLEncoder::encode(work.buffer, work.buffer.hasAlpha, plan);
    case ImageFormat::jpeg:
    case ImageFormat::heic:
    case ImageFormat::avif:
      return NativeImageIOEncoder::encode(work.image, work.buffer.hasAlpha, work.format, plan);
  }
  throw ImageProcessingError::encodingFailed(work.format);
}

/// The source as it came, in JPEG XL; nothing where the pixels are to be encoded.
std::optional<Bytes> transcoded(ByteView file, ImageFormat source, ImageFormat format,
                                double quality, const EncodingPlan& plan) {
  if (format != ImageFormat::jxl || source != ImageFormat::jpeg ||
      !(quality >= transcodingQuality)) {
    return std::nullopt;
  }
  return JXLEncoder::transcodeJPEG(file, ordinal(plan.effort) + 5);
}

Bytes compressed(ByteView file, ImageFormat format, double quality) {
  ImageDecoder::DecodedImage source = ImageDecoder::decodeImageSource(file);
  RGBABuffer buffer(source.image);
  Work work{.image = std::move(source.image), .buffer = std::move(buffer), .format = format};
  work.characteristics = ImageAnalyzer::analyze(work.buffer);
  const EncodingPlan plan = EncodingStrategy::plan(work.characteristics, format, quality);
  if (auto output = transcoded(file, source.format, format, quality, plan)) {
    return std::move(*output);
  }
  // Only one of the two pictures is encoded; the memory of the other goes first.
  if (encodesBuffer(format)) {
    work.image.pixels.reset();
  } else {
    work.buffer.releasePixels();
  }
  return EncodingAttempts::encodeSmallest(plan,
                                          [&work](const EncodingPlan& attempt, PNGForm pngForm) {
                                            return encode(work, attempt, pngForm);
                                          });
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
