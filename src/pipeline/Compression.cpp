#include "pipeline/Compression.h"

#include <utility>

#include "pipeline/EncodingAttempts.h"
#include "pipeline/EncodingStrategy.h"
#include "pipeline/ImageAnalyzer.h"
#include "pipeline/ImageDecoder.h"

namespace orvane {
namespace {

/// From this perceptual quality on, a file is repacked without loss where the output format can.
constexpr double repackingQuality = 90;

std::optional<Bytes> repacked(ByteView file, std::string_view sourceType,
                              const OutputFormat& output, double quality,
                              EncodingPlan::Effort effort) {
  const auto& repacking = output.repacking;
  if (!repacking || repacking->source.typeIdentifier() != sourceType ||
      !(quality >= repackingQuality)) {
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

}  // namespace

Compression::Compression(ByteView file, ImageFormat format, double quality)
    : file_(file),
      output_(OutputFormat::of(format)),
      quality_(quality),
      source_(ImageDecoder::open(file)) {}

void Compression::decode() {
  Image image = ImageDecoder::decode(*source_).image;
  RGBABuffer buffer(image);
  const ImageCharacteristics characteristics = ImageAnalyzer::analyze(buffer);
  plan_ = EncodingStrategy::plan(characteristics, output_.format, quality_);
  picture_.emplace(Picture{std::move(image), std::move(buffer), characteristics});
}

Bytes Compression::encode() {
  if (auto file = repacked(file_, source_->typeIdentifier(), output_, quality_, plan_->effort)) {
    return *std::move(file);
  }
  releaseOther(*picture_, output_.input);
  return EncodingAttempts::encodeSmallest(*plan_, [this](const EncodingPlan& plan, PNGForm form) {
    return output_.encode(*picture_, plan, form);
  });
}

CompressedFile compressOpenFile(const SourceFile& source, ImageFormat format, double quality) {
  const Bytes file = source.readWhole();
  Compression compression(file, format, quality);
  compression.decode();
  const auto output = std::make_shared<const Bytes>(compression.encode());
  return {
      .sourceSize = static_cast<std::int64_t>(file.size()), .storage = output, .output = *output};
}

CompressedFile compressHere(const std::string& path, ImageFormat format, double quality) {
  return compressOpenFile(SourceFile::open(path), format, quality);
}

}  // namespace orvane
