#pragma once

#include "codecs/heic/X265Library.h"

/// The settings of x265.
namespace orvane::HEICSettings {

/// The side of the smallest picture that is coded, in pixels: x265 wants at least one coding tree
/// unit, and decoders in hardware want pictures no smaller.
inline constexpr int minimumSide = 64;

/// The constant rate factor that stands for a quality of 0…1. Fewest bits at 51. In hundredths, as
/// libheif hands only whole numbers on.
int rateFactorInHundredths(double quality);

struct Size {
  int width, height;
};

/// Both are for one picture of 8 bits. x265 can share the rows of large ones among threads. They
/// throw std::bad_alloc, and std::runtime_error when x265 lacks something.
X265Library::Param forColor(Size size, double rateFactor, bool isPhotograph);
X265Library::Param forAlpha(Size size);

}  // namespace orvane::HEICSettings
