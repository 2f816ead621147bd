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

bool repacks(const ImageSource& source, const OutputFormat& output, double quality) {
  return output.repacking && output.repacking->source.typeIdentifier() == source.typeIdentifier() &&
         quality >= repackingQuality;
}

/// Starting threads would take a good part of what they save on smaller pictures.
bool isWorthThreads(const RGBABuffer& buffer) {
  constexpr std::size_t leastPixels = 1'000'000;
  return buffer.width * buffer.height >= leastPixels;
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
      source_(ImageDecoder::open(file)),
      repacks_(repacks(*source_, output_, quality)) {}

void Compression::decode() {
  Image image = ImageDecoder::decode(*source_).image;
  source_.reset();
  RGBABuffer buffer(image);
  const ImageCharacteristics characteristics = ImageAnalyzer::analyze(buffer);
  plan_ = EncodingStrategy::plan(characteristics, output_.format, quality_);
  picture_.emplace(Picture{std::move(image), std::move(buffer), characteristics});
}

Bytes Compression::encode(int threads) {
  plan_->threads = isWorthThreads(picture_->buffer) ? threads : 1;
  if (repacks_) {
    if (auto file = output_.repacking->repack(file_, *plan_)) return *std::move(file);
  }
  releaseOther(*picture_, output_.input);
  return EncodingAttempts::encodeSmallest(*plan_, [this](const EncodingPlan& plan, PNGForm form) {
    return output_.encode(*picture_, plan, form);
  });
}

CompressedFile compressOpenFile(const SourceFile& source, ImageFormat format, double quality) {
  Bytes file = source.readWhole();
  const auto size = static_cast<std::int64_t>(file.size());
  Compression compression(file, format, quality);
  compression.decode();
  if (!compression.encodesFromFile()) file = Bytes();
  const auto output = std::make_shared<const Bytes>(compression.encode());
  return {.sourceSize = size, .storage = output, .output = *output};
}

CompressedFile compressHere(const std::string& path, ImageFormat format, double quality) {
  return compressOpenFile(SourceFile::open(path), format, quality);
}

}  // namespace orvane
