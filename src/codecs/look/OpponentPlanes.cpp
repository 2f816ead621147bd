#include "codecs/look/OpponentPlanes.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <utility>

#include "codecs/TransferCurve.h"

namespace orvane {
namespace {

std::array<float, 256> makeDecodingTable() {
  std::array<float, 256> table;
  for (std::size_t i = 0; i < table.size(); ++i) {
    table[i] = static_cast<float>(TransferCurve::lightOf(static_cast<double>(i) / 255));
  }
  return table;
}

Plane<float> halved(const Plane<float>& plane) {
  Plane<float> half((plane.width + 1) / 2, (plane.height + 1) / 2);
  for (std::size_t y = 0; y < half.height; ++y) {
    const float* const upper = plane.row(y * 2);
    const float* const lower = plane.row(std::min(y * 2 + 1, plane.height - 1));
    float* const out = half.row(y);
    for (std::size_t x = 0; x < plane.width / 2; ++x) {
      out[x] = (upper[x * 2] + upper[x * 2 + 1] + lower[x * 2] + lower[x * 2 + 1]) / 4;
    }
    if (plane.width % 2 == 1) {
      out[half.width - 1] = (upper[plane.width - 1] + lower[plane.width - 1]) / 2;
    }
  }
  return half;
}

/// The cube root of a positive number, within two units in the last place or so.
float cubeRoot(float value) {
  float root = std::bit_cast<float>(std::bit_cast<std::uint32_t>(value) / 3 + 0x2A514067U);
  for (int i = 0; i < 2; ++i) {  // Halley's iteration
    const float cube = root * root * root;
    root *= (cube + 2 * value) / (2 * cube + value);
  }
  return root;
}

/// A pixel in proportion to light.
struct LinearColor {
  float red, green, blue;
};

/// The response of one kind of cones, by the weights of XYB.
float response(const LinearColor& color, float red, float green, float blue) {
  constexpr float bias = 0.0037930732552754493F;
  constexpr float biasRoot = 0.1559542025327239F;
  return cubeRoot(red * color.red + green * color.green + blue * color.blue + bias) - biasRoot;
}

float longWaves(const LinearColor& color) { return response(color, 0.3F, 0.622F, 0.078F); }
float mediumWaves(const LinearColor& color) { return response(color, 0.23F, 0.692F, 0.078F); }
float shortWaves(const LinearColor& color) {
  return response(color, 0.24342268924547819F, 0.20476744424496821F, 0.5518098665095536F);
}

/// A plane of one number for each pixel.
template <class Number>
Plane<float> planeOf(const LinearPlanes& linear, Number number) {
  Plane<float> plane(linear[0].width, linear[0].height);
  const float* const red = linear[0].samples.data();
  const float* const green = linear[1].samples.data();
  const float* const blue = linear[2].samples.data();
  float* const out = plane.samples.data();
  for (std::size_t i = 0; i < plane.samples.size(); ++i) {
    out[i] = number({red[i], green[i], blue[i]});
  }
  return plane;
}

}  // namespace

LinearPlanes linearPlanes(const Image& image) {
  const std::array<float, 256> table = makeDecodingTable();
  Plane<float> empty(image.width, image.height);
  LinearPlanes planes{empty, empty, std::move(empty)};
  for (std::size_t y = 0; y < image.height; ++y) {
    const std::uint8_t* const row = image.row(y);
    for (std::size_t channel = 0; channel < planes.size(); ++channel) {
      float* const out = planes[channel].row(y);
      for (std::size_t x = 0; x < image.width; ++x) out[x] = table[row[x * 4 + channel]];
    }
  }
  return planes;
}

LinearPlanes halved(const LinearPlanes& planes) {
  return {halved(planes[0]), halved(planes[1]), halved(planes[2])};
}

Plane<float> opponentPlane(const LinearPlanes& linear, OpponentChannel channel) {
  if (channel == OpponentChannel::redGreen) {
    return planeOf(linear, [](const LinearColor& color) {
      return (longWaves(color) - mediumWaves(color)) * 7 + 0.42F;
    });
  }
  if (channel == OpponentChannel::luma) {
    return planeOf(linear, [](const LinearColor& color) {
      return (longWaves(color) + mediumWaves(color)) / 2 + 0.01F;
    });
  }
  return planeOf(linear, [](const LinearColor& color) {
    return shortWaves(color) - (longWaves(color) + mediumWaves(color)) / 2 + 0.55F;
  });
}

}  // namespace orvane
