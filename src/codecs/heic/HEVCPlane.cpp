#include "codecs/heic/HEVCPlane.h"

#include <new>

namespace orvane {
namespace {

/// Rows begin at multiples of this many bytes, and this many bytes follow the last row. The vector
/// code of decoders needs less.
constexpr std::size_t alignment = 64;

/// The value of a sample that has not been decoded: noise that no picture contains.
std::uint32_t blankSample(std::size_t x, std::size_t y, int bitDepth) {
  const auto mixed =
      static_cast<std::uint32_t>(x) * 0x9E3779B1U ^ static_cast<std::uint32_t>(y) * 0x85EBCA77U;
  return mixed * 0xC2B2AE3DU >> (32 - bitDepth);
}

}  // namespace

HEVCPlane::HEVCPlane(std::size_t width, std::size_t height, int bitDepth)
    : width_(width), height_(height), bitDepth_(bitDepth) {
  const std::size_t used = width * (bitDepth > 8 ? 2 : 1);
  bytesPerRow_ = (used + alignment - 1) / alignment * alignment;
  memory_.reset(
      static_cast<std::uint8_t*>(std::aligned_alloc(alignment, bytesPerRow_ * height + alignment)));
  if (memory_ == nullptr) throw std::bad_alloc();
  if (bitDepth > 8) {
    makeBlank<std::uint16_t>();
  } else {
    makeBlank<std::uint8_t>();
  }
}

template <class Sample>
void HEVCPlane::makeBlank() {
  for (std::size_t y = 0; y < height_; ++y) {
    auto* row = reinterpret_cast<Sample*>(memory_.get() + y * bytesPerRow_);
    for (std::size_t x = 0; x < width_; ++x) {
      row[x] = static_cast<Sample>(blankSample(x, y, bitDepth_));
    }
  }
}

bool HEVCPlane::isBlank(std::size_t x, std::size_t y) const {
  const std::uint8_t* row = memory_.get() + y * bytesPerRow_;
  const std::uint32_t sample =
      bitDepth_ > 8 ? reinterpret_cast<const std::uint16_t*>(row)[x] : row[x];
  return sample == blankSample(x, y, bitDepth_);
}

/// Whether the part of the block of 16 × 16 samples that lies within the plane is still blank. Only
/// the middles of its 8 × 8 quarters count, because deblocking of decoded neighbours changes up to
/// three samples on both sides of the edges of an 8 × 8 grid (ITU-T H.265, 8.7.2).
bool HEVCPlane::isBlankBlock(std::size_t left, std::size_t top) const {
  for (const std::size_t dy : {3, 4, 11, 12}) {
    const std::size_t y = top + dy;
    if (y >= height_) break;
    for (const std::size_t dx : {3, 4, 11, 12}) {
      const std::size_t x = left + dx;
      if (x < width_ && !isBlank(x, y)) return false;
    }
  }
  return true;
}

/// Coding tree blocks have sides of 16, 32 or 64, and sides of pictures are multiples of 8.
bool HEVCPlane::isComplete() const {
  for (std::size_t top = 0; top < height_; top += 16) {
    for (std::size_t left = 0; left < width_; left += 16) {
      if (isBlankBlock(left, top)) return false;
    }
  }
  return true;
}

}  // namespace orvane
