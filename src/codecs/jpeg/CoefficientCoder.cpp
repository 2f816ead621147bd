#include "codecs/jpeg/CoefficientCoder.h"

#include <algorithm>

#include "codecs/jpeg/BlockTransform.h"
#include "codecs/jpeg/LumaBlock.h"

namespace orvane {
namespace {

/// Red flowers, paint and cloth have a mean Cr of at least 48; skin stays below. Their detail lies
/// in the red channel, which luma shows weakened: lowering its levels softens it too much.
constexpr double saturatedRed = 48;
constexpr float redSensitivity = 4;

/// One block of a plane of samples, less `center`.
Block blockAt(const float* corner, std::size_t stride, float center) {
  Block block;
  for (std::size_t y = 0; y < 8; ++y) {
    for (std::size_t x = 0; x < 8; ++x) block[y * 8 + x] = corner[y * stride + x] - center;
  }
  return block;
}

}  // namespace

CoefficientCoder::CoefficientCoder(OpaqueRows& rows, const JPEGSettings& settings,
                                   CoefficientPlanes& planes)
    : rows_(rows),
      settings_(settings),
      planes_(planes),
      side_(unitSide(settings.chroma)),
      mask_(rows),
      lumaQuantizer_(Quantizer::forLuma(settings)),
      chromaQuantizer_(Quantizer::forChroma(settings)),
      pixels_{PixelStrip(rows.width(), side_), PixelStrip(rows.width(), side_)},
      decoded_((rows.width() * 8 + side_ - 1) / side_, (rows.height() * 8 + side_ - 1) / side_,
               pixels_[0].width() * 8 / side_),
      compensation_(rows.width(), rows.height(), settings.chroma) {}

void CoefficientCoder::code() {
  const std::size_t strips = (rows_.height() + side_ - 1) / side_;
  for (std::size_t strip = 0; strip < strips; ++strip) {
    pixels_[strip % 2].read(rows_, strip * side_);
    if (hasChroma()) codeChroma(strip);
    if (strip > 0) codeLuma(strip - 1);
  }
  codeLuma(strips - 1);
}

void CoefficientCoder::codeChroma(std::size_t strip) {
  sampleChroma(pixels_[strip % 2], settings_.chroma, chromaStrip_);
  for (std::size_t component = 0; component < 2; ++component) {
    for (std::size_t column = 0; column < chromaStrip_.width / 8; ++column) {
      codeChromaBlock(component, strip, column);
    }
  }
}

void CoefficientCoder::codeChromaBlock(std::size_t component, std::size_t strip,
                                       std::size_t column) {
  const float* const corner = chromaStrip_.planes[component].data() + column * 8;
  Block block = blockAt(corner, chromaStrip_.width, 0);
  transformForward(block);
  const std::size_t count = side_ / 8;
  std::int16_t* const levels = planes_.block(component + 1, strip, column);
  chromaQuantizer_.quantize(block, mask_.at(column * count, strip * count, count), levels);
  Block restored = chromaQuantizer_.restore(levels);
  transformBack(restored);
  decoded_.store(component, strip, column, restored);
}

void CoefficientCoder::codeLuma(std::size_t strip) {
  const PixelStrip& pixels = pixels_[strip % 2];
  sampleLuma(pixels, lumaStrip_);
  if (hasChroma()) compensation_.apply(pixels, strip * side_, decoded_, lumaStrip_);
  const std::size_t first = strip * side_ / 8;
  const std::size_t rows = std::min(side_ / 8, planes_.rows(0) - first);
  for (std::size_t row = 0; row < rows; ++row) {
    for (std::size_t column = 0; column < planes_.columns(0); ++column) {
      const float* const corner = lumaStrip_.data() + row * 8 * pixels.width() + column * 8;
      codeLumaBlock(blockAt(corner, pixels.width(), 128), lumaErrorVisibility(column, first + row),
                    lumaQuantizer_, planes_.block(0, first + row, column));
    }
  }
}

ErrorVisibility CoefficientCoder::lumaErrorVisibility(std::size_t column, std::size_t row) const {
  const ErrorVisibility visibility = mask_.at(column, row, 1);
  if (!hasChroma()) return visibility;
  const std::size_t count = side_ / 8;
  const int level = planes_.block(2, row / count, column / count)[0];
  const double meanRedDifference = level * static_cast<double>(settings_.chromaSteps[0]) / 8;
  if (meanRedDifference < saturatedRed) return visibility;
  return {.fine = visibility.fine * redSensitivity, .coarse = visibility.coarse * redSensitivity};
}

}  // namespace orvane
