#pragma once

#include <algorithm>

#include "codecs/YCbCr.h"

namespace orvane {

/// The change of luma, in steps of 255, that changes a pixel's luminance as much as giving it other
/// chroma does (without its offset of 128), by the weights of ITU-R BT.709. `slopes` are those of
/// the transfer curve at the pixel's channels. At most 40 up or down: a larger change of luma would
/// show by itself.
inline float lumaChangeFor(const Color& color, const Color& slopes, float blueDifference,
                           float redDifference) {
  const Color error = colorDifferenceOf(blueDifference - blueDifferenceOf(color),
                                        redDifference - redDifferenceOf(color));
  // A display shows no less than 0 and no more than 255 of a channel.
  const auto shown = [](float channel, float change) {
    return std::clamp(channel + change, 0.0F, 255.0F) - channel;
  };
  const float red = 0.2126F * slopes.red;
  const float green = 0.7152F * slopes.green;
  const float blue = 0.0722F * slopes.blue;
  const float change =
      (red * shown(color.red, error.red) + green * shown(color.green, error.green) +
       blue * shown(color.blue, error.blue)) /
      (red + green + blue);
  return std::clamp(change, -40.0F, 40.0F);
}

}  // namespace orvane
