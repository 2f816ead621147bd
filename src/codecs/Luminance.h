#pragma once

#include "codecs/YCbCr.h"

namespace orvane {

/// The luma that adds as much luminance to a pixel as an error of its channels does, by the weights
/// of ITU-R BT.709. `slopes` are those of the transfer curve at the pixel's channels.
inline float lumaFor(const Color& error, const Color& slopes) {
  const float red = 0.2126F * slopes.red;
  const float green = 0.7152F * slopes.green;
  const float blue = 0.0722F * slopes.blue;
  return (red * error.red + green * error.green + blue * error.blue) / (red + green + blue);
}

/// The most that is taken from luma for errors of chroma, in steps of 255. A larger change would
/// show by itself.
inline constexpr float largestLumaChange = 40;

}  // namespace orvane
