#include "library/orvane.h"

#include <optional>

#include "batch/BatchRunner.h"
#include "pipeline/Compression.h"
#include "pipeline/EncodingStrategy.h"
#include "pipeline/ImageAnalyzer.h"
#include "pipeline/ImageCompressor.h"
#include "pipeline/ImageDecoder.h"
#include "platform/foundation/FileURL.h"

namespace orvane {

Analysis analyze(ByteView file, ImageFormat format, double quality) {
  const auto decoded = ImageDecoder::decodeImageSource(file);
  const auto characteristics = ImageAnalyzer::analyze(RGBABuffer(decoded.image));
  return {.format = decoded.format,
          .characteristics = characteristics,
          .plan = EncodingStrategy::plan(characteristics, format, quality)};
}

Bytes compress(ByteView file, ImageFormat format, double quality) {
  Compression compression(file, format, quality);
  compression.decode();
  return compression.encode();
}

ImageCompressionResult compressFile(const std::string& path, const std::string& folder,
                                    ImageFormat format, double quality) {
  return ImageCompressor::compress(path, FileURL::fromPath(folder), format, quality, std::nullopt);
}

std::vector<ImageCompressionResult> compressFiles(std::span<const std::string> paths,
                                                  const std::string& folder, ImageFormat format,
                                                  double quality, const BatchOptions& options) {
  return compressAll(
      paths, FileURL::fromPath(folder), format, quality, options,
      [](const auto&... arguments) { return ImageCompressor::compressUncommitted(arguments...); });
}

}  // namespace orvane
