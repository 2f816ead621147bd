#include "codecs/jpeg/CoefficientCoder.h"

#include <algorithm>
#include <utility>

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

CoefficientCoder::CoefficientCoder(OpaqueRows& rows, const JPEGSettings& settings)
    : rows_(rows),
      settings_(settings),
      side_(unitSide(settings.chroma)),
      columns_((rows.width() + side_ - 1) / side_),
      strips_((rows.height() + side_ - 1) / side_),
      mask_(rows),
      lumaQuantizer_(Quantizer::forLuma(settings)),
      chromaQuantizer_(Quantizer::forChroma(settings)),
      pixels_(rows.width(), side_),
      compensation_(rows.width(), rows.height(), settings.chroma) {}

CoefficientCoder::ChromaPlanes CoefficientCoder::codeChroma() {
  const std::size_t width = (rows_.width() * 8 + side_ - 1) / side_;
  const std::size_t height = (rows_.height() * 8 + side_ - 1) / side_;
  ChromaPlanes planes{CoefficientPlane(width, height), CoefficientPlane(width, height)};
  for (std::size_t strip = 0; strip < strips_; ++strip) codeChromaStrip(strip, planes);
  return planes;
}

void CoefficientCoder::codeChromaStrip(std::size_t strip, ChromaPlanes& planes) {
  pixels_.read(rows_, strip * side_);
  sampleChroma(pixels_, settings_.chroma, chromaStrip_);
  const std::size_t count = side_ / 8;
  for (std::size_t component : {0, 1}) {
    for (std::size_t column = 0; column < columns_; ++column) {
      const float* const corner = chromaStrip_.planes[component].data() + column * 8;
      Block block = blockAt(corner, chromaStrip_.width, 0);
      transformForward(block);
      chromaQuantizer_.quantize(block, mask_.at(column * count, strip * count, count),
                                planes[component].block(strip, column));
    }
  }
}

void CoefficientCoder::decodeChroma(ChromaPlanes planes) {
  decoded_.emplace(planes[0].width(), planes[0].height());
  findSaturatedRed(planes[1]);
  for (std::size_t component : {0, 1}) {
    decodeComponent(component, CoefficientPlane(std::move(planes[component])));
  }
}

void CoefficientCoder::decodeComponent(std::size_t component, const CoefficientPlane& plane) {
  decoded_->allocate(component);
  for (std::size_t row = 0; row < plane.rows(); ++row) {
    for (std::size_t column = 0; column < plane.columns(); ++column) {
      Block restored = chromaQuantizer_.restore(plane.block(row, column));
      transformBack(restored);
      decoded_->store(component, row, column, restored);
    }
  }
}

void CoefficientCoder::findSaturatedRed(const CoefficientPlane& redDifference) {
  isSaturatedRed_.resize(columns_ * strips_);
  for (std::size_t i = 0; i < isSaturatedRed_.size(); ++i) {
    const int level = redDifference.block(i / columns_, i % columns_)[0];
    isSaturatedRed_[i] = level * static_cast<double>(settings_.chromaSteps[0]) / 8 >= saturatedRed;
  }
}

CoefficientPlane CoefficientCoder::codeLuma() {
  CoefficientPlane plane(rows_.width(), rows_.height());
  for (std::size_t strip = 0; strip < strips_; ++strip) codeLumaStrip(strip, plane);
  decoded_.reset();
  return plane;
}

void CoefficientCoder::codeLumaStrip(std::size_t strip, CoefficientPlane& plane) {
  pixels_.read(rows_, strip * side_);
  sampleLuma(pixels_, lumaStrip_);
  if (decoded_) compensation_.apply(pixels_, strip * side_, *decoded_, lumaStrip_);
  const std::size_t first = strip * side_ / 8;
  const std::size_t count = std::min(side_ / 8, plane.rows() - first);
  for (std::size_t row = 0; row < count; ++row) {
    for (std::size_t column = 0; column < plane.columns(); ++column) {
      const float* const corner = lumaStrip_.data() + row * 8 * pixels_.width() + column * 8;
      codeLumaBlock(blockAt(corner, pixels_.width(), 128), lumaErrorVisibility(column, first + row),
                    lumaQuantizer_, plane.block(first + row, column));
    }
  }
}

ErrorVisibility CoefficientCoder::lumaErrorVisibility(std::size_t column, std::size_t row) const {
  const ErrorVisibility visibility = mask_.at(column, row, 1);
  const std::size_t count = side_ / 8;
  if (!decoded_ || !isSaturatedRed_[row / count * columns_ + column / count]) return visibility;
  return {.fine = visibility.fine * redSensitivity, .coarse = visibility.coarse * redSensitivity};
}

}  // namespace orvane
