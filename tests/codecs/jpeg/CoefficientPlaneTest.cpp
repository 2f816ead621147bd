#include "codecs/jpeg/CoefficientPlane.h"

#include <gtest/gtest.h>

#include <utility>

namespace orvane {
namespace {

TEST(CoefficientPlane, hasAsManyBlocksAsTheFile) {
  const CoefficientPlane plane(33, 17);
  EXPECT_EQ(plane.width(), 33u);
  EXPECT_EQ(plane.height(), 17u);
  EXPECT_EQ(plane.columns(), 5u);
  EXPECT_EQ(plane.rows(), 3u);
}

TEST(CoefficientPlane, keepsWhatIsWritten) {
  CoefficientPlane plane(20, 20);
  plane.block(2, 1)[63] = 5;
  const CoefficientPlane moved(std::move(plane));
  EXPECT_EQ(moved.block(2, 1)[63], 5);
  EXPECT_EQ(moved.block(2, 1)[62], 0);
}

}  // namespace
}  // namespace orvane
