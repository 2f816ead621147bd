#include "Canvas.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orvane::examples {
namespace {

double valueNoise(Point point) {
  const double left = std::floor(point.x), top = std::floor(point.y);
  const auto corner = [&](int dx, int dy) {
    const auto column = static_cast<std::uint32_t>(static_cast<std::int64_t>(left) + dx);
    const auto row = static_cast<std::uint32_t>(static_cast<std::int64_t>(top) + dy);
    return scatter(column, row) / 4294967295.0;
  };
  const auto smooth = [](double t) { return t * t * (3 - 2 * t); };
  const double x = smooth(point.x - left), y = smooth(point.y - top);
  return std::lerp(std::lerp(corner(0, 0), corner(1, 0), x),
                   std::lerp(corner(0, 1), corner(1, 1), x), y);
}

std::uint8_t toByte(double value) {
  return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 1.0) * 255));
}

/// The mean of the samples of one pixel, whose colours count as much as they cover.
std::array<std::uint8_t, 4> pixelAt(std::size_t x, std::size_t y, Color (*colorAt)(Point)) {
  constexpr int samplesPerSide = 4;
  Color sum = transparent;
  for (int row = 0; row < samplesPerSide; ++row) {
    for (int column = 0; column < samplesPerSide; ++column) {
      const Color sample = colorAt({static_cast<double>(x) + (column + 0.5) / samplesPerSide,
                                    static_cast<double>(y) + (row + 0.5) / samplesPerSide});
      sum.r += sample.r * sample.a;
      sum.g += sample.g * sample.a;
      sum.b += sample.b * sample.a;
      sum.a += sample.a;
    }
  }
  if (sum.a == 0) return {};
  return {toByte(sum.r / sum.a), toByte(sum.g / sum.a), toByte(sum.b / sum.a),
          toByte(sum.a / (samplesPerSide * samplesPerSide))};
}

}  // namespace

Color mix(const Color& from, const Color& to, double t) {
  const double at = std::clamp(t, 0.0, 1.0);
  return {std::lerp(from.r, to.r, at), std::lerp(from.g, to.g, at), std::lerp(from.b, to.b, at),
          std::lerp(from.a, to.a, at)};
}

Color scaled(const Color& color, double factor) {
  return {color.r * factor, color.g * factor, color.b * factor, color.a};
}

double ramp(double value, double from, double to) {
  return std::clamp((value - from) / (to - from), 0.0, 1.0);
}

bool Rectangle::contains(Point point, double radius) const {
  if (point.x < left || point.x >= right || point.y < top || point.y >= bottom) return false;
  const Point nearest{std::clamp(point.x, left + radius, right - radius),
                      std::clamp(point.y, top + radius, bottom - radius)};
  return radius == 0 || distance(point, nearest) <= radius;
}

double distance(Point one, Point other) { return std::hypot(one.x - other.x, one.y - other.y); }

std::uint32_t scatter(std::uint32_t x, std::uint32_t y) {
  std::uint32_t bits = x * 0x9E3779B1U + y * 0x85EBCA77U + 0x27220A95U;
  for (int round = 0; round < 3; ++round) {
    bits ^= bits >> 15;
    bits *= 0xC2B2AE3DU;
  }
  return bits ^ bits >> 16;
}

double fractalNoise(Point point, int octaves) {
  double sum = 0, weight = 1, total = 0;
  for (int octave = 0; octave < octaves; ++octave) {
    sum += weight * valueNoise(point);
    total += weight;
    weight /= 2;
    point = {point.x * 2 + 17, point.y * 2 + 31};
  }
  return sum / total;
}

RGBABuffer paint(std::size_t width, std::size_t height, Color (*colorAt)(Point)) {
  const MutablePixelMemory pixels = makePixelMemory(width * height * 4);
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t x = 0; x < width; ++x) {
      std::ranges::copy(pixelAt(x, y, colorAt), pixels.get() + (y * width + x) * 4);
    }
  }
  return RGBABuffer(width, height, pixels, ColorSpace::sRGB());
}

}  // namespace orvane::examples
