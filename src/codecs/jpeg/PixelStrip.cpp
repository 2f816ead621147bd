#include "codecs/jpeg/PixelStrip.h"

#include <algorithm>

namespace orvane {

PixelStrip::PixelStrip(std::size_t pictureWidth, std::size_t side)
    : pictureWidth_(pictureWidth), width_((pictureWidth + side - 1) / side * side), height_(side) {
  for (auto& plane : planes_) plane.resize(width_ * height_);
}

void PixelStrip::read(OpaqueRows& rows, std::size_t first) {
  const auto pixels = rows.read(first, height_);
  for (std::size_t y = 0; y < pixels.size(); ++y) store(pixels[y], y);
  for (std::size_t y = pixels.size(); y < height_; ++y) repeatRow(y);
}

void PixelStrip::store(const std::uint8_t* pixels, std::size_t y) {
  std::uint8_t* const red = planes_[0].data() + y * width_;
  std::uint8_t* const green = planes_[1].data() + y * width_;
  std::uint8_t* const blue = planes_[2].data() + y * width_;
  for (std::size_t x = 0; x < pictureWidth_; ++x) {
    red[x] = pixels[x * 4];
    green[x] = pixels[x * 4 + 1];
    blue[x] = pixels[x * 4 + 2];
  }
  for (std::uint8_t* plane : {red, green, blue}) {
    std::fill(plane + pictureWidth_, plane + width_, plane[pictureWidth_ - 1]);
  }
}

void PixelStrip::repeatRow(std::size_t y) {
  for (auto& plane : planes_) {
    std::copy_n(plane.data() + (y - 1) * width_, width_, plane.data() + y * width_);
  }
}

}  // namespace orvane
