#include "codecs/jpeg/CoefficientPlanes.h"

#include <gtest/gtest.h>

#include "codecs/ImageDestination.h"

namespace orvane {
namespace {

using Chroma = JPEGSettings::Chroma;

TEST(CoefficientPlanes, haveAsManyBlocksAsTheFile) {
  const CoefficientPlanes halved(33, 17, 3, Chroma::halved);
  EXPECT_EQ(halved.count(), 3u);
  EXPECT_EQ(halved.columns(0), 5u);
  EXPECT_EQ(halved.rows(0), 3u);
  EXPECT_EQ(halved.columns(2), 3u);
  EXPECT_EQ(halved.rows(2), 2u);
  const CoefficientPlanes full(33, 17, 3, Chroma::full);
  EXPECT_EQ(full.columns(1), 5u);
  EXPECT_EQ(full.rows(1), 3u);
}

TEST(CoefficientPlanes, keepWhatIsWritten) {
  CoefficientPlanes planes(20, 20, 1, Chroma::full);
  planes.block(0, 2, 1)[63] = 5;
  EXPECT_EQ(planes.block(0, 2, 1)[63], 5);
  EXPECT_EQ(planes.block(0, 2, 1)[62], 0);
}

TEST(CoefficientPlanes, refuseSidesThatLibjpegDoesNotTake) {
  EXPECT_NO_THROW(CoefficientPlanes(65'500, 1, 3, Chroma::full));
  EXPECT_THROW(CoefficientPlanes(65'501, 1, 3, Chroma::full), UnwritableImage);
  EXPECT_THROW(CoefficientPlanes(1, 65'501, 1, Chroma::full), UnwritableImage);
  EXPECT_THROW(CoefficientPlanes(0, 1, 1, Chroma::full), UnwritableImage);
  EXPECT_THROW(CoefficientPlanes(1, 0, 1, Chroma::full), UnwritableImage);
}

}  // namespace
}  // namespace orvane
