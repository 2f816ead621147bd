#include "codecs/ImageLimits.h"

#include <gtest/gtest.h>

#include "codecs/ImageSource.h"
#include "platform/foundation/Memory.h"

namespace orvane {
namespace {

TEST(ImageLimits, allowPicturesUpToEachLimit) {
  EXPECT_NO_THROW(ImageLimits::check(1, 1, 8));
  EXPECT_NO_THROW(ImageLimits::check(ImageLimits::maximumSide, 1, 4));
  EXPECT_NO_THROW(ImageLimits::check(1, ImageLimits::maximumSide, 4));
}

TEST(ImageLimits, refuseEmptyPicturesAndLongSides) {
  EXPECT_THROW(ImageLimits::check(0, 1, 4), UnreadableImage);
  EXPECT_THROW(ImageLimits::check(1, 0, 4), UnreadableImage);
  EXPECT_THROW(ImageLimits::check(ImageLimits::maximumSide + 1, 1, 1), UnreadableImage);
  EXPECT_THROW(ImageLimits::check(1, ImageLimits::maximumSide + 1, 1), UnreadableImage);
  EXPECT_THROW(ImageLimits::check(UINT64_MAX, UINT64_MAX, 8), UnreadableImage);
}

TEST(ImageLimits, refuseMorePixelsThanCanBeCounted) {
  constexpr std::uint64_t side = std::uint64_t{1} << 15;  // 2³⁰ pixels
  EXPECT_THROW(ImageLimits::check(side, side + 1, 0), UnreadableImage);
  EXPECT_NO_THROW(ImageLimits::check(side, side, 0));
}

TEST(ImageLimits, refuseMoreThanHalfOfTheMemory) {
  const std::uint64_t half = Memory::usable() / 2;
  ASSERT_GT(half, 1000u);
  const auto perPixel = static_cast<std::size_t>(half / 1000);
  EXPECT_NO_THROW(ImageLimits::check(1000, 1, perPixel));
  EXPECT_THROW(ImageLimits::check(1001, 1, perPixel), UnreadableImage);
}

TEST(ImageLimits, refuseLargeProfiles) {
  EXPECT_NO_THROW(ImageLimits::checkICC(ImageLimits::maximumICCBytes));
  EXPECT_THROW(ImageLimits::checkICC(ImageLimits::maximumICCBytes + 1), UnreadableImage);
}

}  // namespace
}  // namespace orvane
