#include "codecs/jpeg/DecodedChroma.h"

#include <algorithm>

namespace orvane {

DecodedChroma::DecodedChroma(std::size_t width, std::size_t height)
    : width_(width), height_(height), paddedWidth_((width + 7) / 8 * 8) {}

void DecodedChroma::allocate(std::size_t component) {
  planes_[component].resize(paddedWidth_ * ((height_ + 7) / 8 * 8));
}

void DecodedChroma::store(std::size_t component, std::size_t row, std::size_t column,
                          const Block& samples) {
  std::uint8_t* const corner = planes_[component].data() + row * 8 * paddedWidth_ + column * 8;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const float sample = std::clamp(samples[i] + 128.5F, 0.0F, 255.0F);
    corner[i / 8 * paddedWidth_ + i % 8] = static_cast<std::uint8_t>(sample);
  }
}

void DecodedChroma::doubleRow(std::size_t component, std::size_t y, std::uint8_t* result) const {
  const std::size_t nearY = y / 2;
  const std::size_t farY =
      y % 2 == 0 ? nearY - std::min<std::size_t>(nearY, 1) : std::min(nearY + 1, height_ - 1);
  const std::uint8_t* const near = row(component, nearY);
  const std::uint8_t* const far = row(component, farY);
  const auto column = [&](std::size_t x) { return 3 * near[x] + far[x]; };
  // Rounds down and up in turn, so that no bias builds up.
  const auto mixed = [&](std::size_t x, std::size_t beside, int rounding) {
    return static_cast<std::uint8_t>((3 * column(x) + column(beside) + rounding) / 16);
  };
  const std::size_t last = width_ - 1;
  result[0] = mixed(0, 0, 8);
  for (std::size_t x = 1; x < width_; ++x) result[2 * x] = mixed(x, x - 1, 8);
  for (std::size_t x = 0; x < last; ++x) result[2 * x + 1] = mixed(x, x + 1, 7);
  result[2 * last + 1] = mixed(last, last, 7);
}

}  // namespace orvane
