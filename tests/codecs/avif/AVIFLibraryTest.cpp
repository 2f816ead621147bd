#include "codecs/avif/AVIFLibrary.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

TEST(AVIFLibrary, tellsTheVersionOfLibaom) {
  EXPECT_GE(AVIFLibrary::aomVersion(), (AVIFLibrary::Version{3, 6}));
  EXPECT_LT(AVIFLibrary::aomVersion(), (AVIFLibrary::Version{100, 0}));
}

}  // namespace
}  // namespace orvane
