#pragma once

#include <cstddef>
#include <cstdint>

#include "picture/RGBABuffer.h"

/// Draws the example pictures, the same on every machine and every time.
namespace orvane::examples {

/// In pixels from the upper left corner.
struct Point {
  double x = 0;
  double y = 0;
};

/// Straight alpha, 0…1.
struct Color {
  double r = 0;
  double g = 0;
  double b = 0;
  double a = 1;
};

inline constexpr Color transparent{0, 0, 0, 0};

/// An opaque colour from 0xRRGGBB.
constexpr Color rgb(std::uint32_t hex) {
  return {(hex >> 16 & 0xFF) / 255.0, (hex >> 8 & 0xFF) / 255.0, (hex & 0xFF) / 255.0};
}

/// From `from` (t ≤ 0) to `to` (t ≥ 1).
Color mix(const Color& from, const Color& to, double t);

/// The same colour, darker or lighter.
Color scaled(const Color& color, double factor);

/// 0…1 from anything in range and beyond.
double ramp(double value, double from, double to);

struct Rectangle {
  double left = 0;
  double top = 0;
  double right = 0;
  double bottom = 0;

  /// With corners of `radius`.
  bool contains(Point point, double radius = 0) const;
};

double distance(Point one, Point other);

/// 32 bits that look random.
std::uint32_t scatter(std::uint32_t x, std::uint32_t y);

/// Smooth noise of features about one unit wide and, on top of them, of ever smaller ones; 0…1.
double fractalNoise(Point point, int octaves);

/// A picture with 16 samples per pixel of what `colorAt` says.
RGBABuffer paint(std::size_t width, std::size_t height, Color (*colorAt)(Point));

}  // namespace orvane::examples
