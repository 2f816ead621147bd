#pragma once

namespace orvane {

/// The colour of one pixel, 0…255 a channel.
struct Color {
  float red, green, blue;
};

// ITU-T T.871, clause 7. Cb and Cr come without their offset of 128.

inline float lumaOf(const Color& c) { return 0.299F * c.red + 0.587F * c.green + 0.114F * c.blue; }
inline float blueDifferenceOf(const Color& c) {
  return -0.168736F * c.red - 0.331264F * c.green + 0.5F * c.blue;
}
inline float redDifferenceOf(const Color& c) {
  return 0.5F * c.red - 0.418688F * c.green - 0.081312F * c.blue;
}

/// Cb and Cr add this to the channels of a pixel.
inline Color colorDifferenceOf(float blueDifference, float redDifference) {
  return {.red = 1.402F * redDifference,
          .green = -0.344136F * blueDifference - 0.714136F * redDifference,
          .blue = 1.772F * blueDifference};
}

}  // namespace orvane
