#include "pipeline/ImageCompressor.h"

#include <algorithm>
#include <cerrno>
#include <new>

#include "pipeline/EncodingAttempts.h"
#include "pipeline/EncodingStrategy.h"
#include "pipeline/ImageAnalyzer.h"
#include "pipeline/ImageDecoder.h"
#include "pipeline/OutputFormat.h"
#include "platform/foundation/FileError.h"
#include "platform/foundation/Files.h"

namespace orvane::ImageCompressor {
namespace {

/// From this perceptual quality on, a file is repacked without loss where the output format can.
constexpr double repackingQuality = 90;

std::optional<Bytes> repacked(ByteView file, ImageFormat source, const OutputFormat& output,
                              double quality, EncodingPlan::Effort effort) {
  const auto& repacking = output.repacking;
  if (!repacking || repacking->source != source || !(quality >= repackingQuality)) {
    return std::nullopt;
  }
  return repacking->repack(file, effort);
}

/// Frees the pixels of the form that is not encoded.
void releaseOther(Picture& picture, OutputFormat::Input encoded) {
  switch (encoded) {
    case OutputFormat::Input::buffer:
      picture.image.pixels.reset();
      break;
    case OutputFormat::Input::image:
      picture.buffer.releasePixels();
      break;
  }
}

Bytes compressed(ByteView file, ImageFormat format, double quality) {
  ImageDecoder::DecodedImage source = ImageDecoder::decodeImageSource(file);
  RGBABuffer buffer(source.image);
  const ImageCharacteristics characteristics = ImageAnalyzer::analyze(buffer);
  const EncodingPlan plan = EncodingStrategy::plan(characteristics, format, quality);
  const OutputFormat& output = OutputFormat::of(format);
  if (auto repackedFile = repacked(file, source.format, output, quality, plan.effort)) {
    return *std::move(repackedFile);
  }
  Picture picture{std::move(source.image), std::move(buffer), characteristics};
  releaseOther(picture, output.input);
  return EncodingAttempts::encodeSmallest(plan, [&](const EncodingPlan& attempt, PNGForm pngForm) {
    return output.encode(picture, attempt, pngForm);
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
