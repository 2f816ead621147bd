#pragma once

#include <cmath>

namespace orvane::test {

/// Linear light of a channel's number, 0…255 (IEC 61966-2-1).
inline double lightOf(double number) {
  const double share = number / 255;
  return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
}

/// Of an sRGB pixel, 0…1.
inline double luminanceOf(double red, double green, double blue) {
  return 0.2126 * lightOf(red) + 0.7152 * lightOf(green) + 0.0722 * lightOf(blue);
}

/// Of a pixel that a decoder restores from luma and from Cb and Cr less 128 (ITU-T T.871).
inline double shownLuminance(double luma, double cb, double cr) {
  return luminanceOf(luma + 1.402 * cr, luma - 0.344136 * cb - 0.714136 * cr, luma + 1.772 * cb);
}

}  // namespace orvane::test
