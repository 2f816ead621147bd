#include "codecs/heic/HEVCPlane.h"

#include <gtest/gtest.h>

#include <cstring>

namespace orvane {
namespace {

struct Area {
  std::size_t left, top, width, height;

  bool contains(std::size_t x, std::size_t y) const {
    return x >= left && x < left + width && y >= top && y < top + height;
  }
};

/// Writes `value` into every byte of the samples of `area` that are not in `hole`.
void fill(HEVCPlane& plane, const Area& area, std::size_t sampleBytes, int value,
          const Area& hole = {0, 0, 0, 0}) {
  for (std::size_t y = area.top; y < area.top + area.height; ++y) {
    for (std::size_t x = area.left; x < area.left + area.width; ++x) {
      if (hole.contains(x, y)) continue;
      std::memset(plane.memory() + y * plane.bytesPerRow() + x * sampleBytes, value, sampleBytes);
    }
  }
}

TEST(HEVCPlane, isCompleteOnceEveryBlockIsWritten) {
  for (const auto& [depth, sampleBytes] : {std::pair{8, 1U}, {10, 2U}, {12, 2U}, {16, 2U}}) {
    HEVCPlane plane(72, 40, depth);
    EXPECT_FALSE(plane.isComplete()) << depth;
    fill(plane, {0, 0, 72, 40}, sampleBytes, 0);
    EXPECT_TRUE(plane.isComplete()) << depth;
  }
}

TEST(HEVCPlane, missesAnyOneBlock) {
  for (std::size_t top = 0; top < 40; top += 16) {
    for (std::size_t left = 0; left < 72; left += 16) {
      HEVCPlane plane(72, 40, 8);
      fill(plane, {0, 0, 72, 40}, 1, 7, {left, top, 16, 16});
      EXPECT_FALSE(plane.isComplete()) << left << "," << top;
    }
  }
}

TEST(HEVCPlane, missesABlockThatDeblockingHasTouched) {
  HEVCPlane plane(32, 32, 8);
  fill(plane, {0, 0, 32, 32}, 1, 90, {16, 16, 16, 16});
  fill(plane, {16, 16, 3, 16}, 1, 91);  // three samples from the left edge
  fill(plane, {16, 16, 16, 3}, 1, 91);  // and from the upper one
  EXPECT_FALSE(plane.isComplete());
}

TEST(HEVCPlane, keepsSamplesWithinTheirDepth) {
  const HEVCPlane plane(64, 64, 10);
  for (std::size_t i = 0; i < 64; ++i) {
    std::uint16_t sample = 0;
    std::memcpy(&sample, plane.memory() + i * plane.bytesPerRow() + i * 2, 2);
    EXPECT_LT(sample, 1024);
  }
}

}  // namespace
}  // namespace orvane
