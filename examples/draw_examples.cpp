// Draws the pictures of this folder: one of each kind that the tool tells apart.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>

#include "Canvas.h"
#include "codecs/png/PNGQuantEncoder.h"

namespace orvane::examples {
namespace {

// logo.png: flat colours and transparency, 256 × 256

bool isInMountain(Point point, Point top) {
  return point.y > top.y + std::abs(point.x - top.x) * 1.15;
}

Color logo(Point point) {
  const double radius = distance(point, {128, 128});
  if (radius > 122) return transparent;
  if (radius > 110) return rgb(0x0A4F5C);
  if (radius > 104) return rgb(0xF4F1E8);
  if (point.y > 176 + 5 * std::sin(point.x / 13)) return rgb(0x0A4F5C);
  if (isInMountain(point, {104, 92})) {
    const double snowLine = 122 + 7 * std::sin(point.x / 5);
    return point.y < snowLine ? rgb(0xFFFFFF) : rgb(0x17808A);
  }
  if (isInMountain(point, {170, 124})) return rgb(0x2FA79B);
  if (distance(point, {160, 92}) < 24) return rgb(0xF5A93B);
  return rgb(0xCDEBE4);
}

// page.png: a screen with text, lines and buttons, 800 × 600

/// 5 dots wide and 7 high, one byte per row.
using Letter = std::array<std::uint8_t, 7>;

constexpr std::array<Letter, 5> vowels{{
    {0b00000, 0b00000, 0b01110, 0b00001, 0b01111, 0b10001, 0b01111},  // a
    {0b00000, 0b00000, 0b01110, 0b10001, 0b11111, 0b10000, 0b01110},  // e
    {0b00100, 0b00000, 0b01100, 0b00100, 0b00100, 0b00100, 0b01110},  // i
    {0b00000, 0b00000, 0b01110, 0b10001, 0b10001, 0b10001, 0b01110},  // o
    {0b00000, 0b00000, 0b10001, 0b10001, 0b10001, 0b10011, 0b01101},  // u
}};
constexpr std::array<Letter, 5> consonants{{
    {0b01100, 0b00100, 0b00100, 0b00100, 0b00100, 0b00100, 0b01110},  // l
    {0b00000, 0b00000, 0b10110, 0b11001, 0b10001, 0b10001, 0b10001},  // n
    {0b00000, 0b00000, 0b10110, 0b11001, 0b10000, 0b10000, 0b10000},  // r
    {0b00000, 0b00000, 0b01111, 0b10000, 0b01110, 0b00001, 0b11110},  // s
    {0b01000, 0b01000, 0b11100, 0b01000, 0b01000, 0b01001, 0b00110},  // t
}};

struct TextLine {
  Point origin;  ///< upper left
  double dot = 1;
  int length = 0;  ///< letters and gaps
};

/// Whether `point` is ink of a line of words that mean nothing.
bool isInk(Point point, const TextLine& line) {
  const double x = (point.x - line.origin.x) / line.dot;
  const double y = (point.y - line.origin.y) / line.dot;
  if (x < 0 || y < 0 || y >= 7 || x >= line.length * 6) return false;
  const auto position = static_cast<std::uint32_t>(x / 6);
  const auto column = static_cast<int>(x) % 6;
  if (column == 5) return false;
  const auto seed = static_cast<std::uint32_t>(line.origin.x * 31 + line.origin.y);
  const std::uint32_t inWords = (position + seed % 3) % 11;
  if (inWords == 4 || inWords == 10) return false;  // between words
  const Letter& letter = (position % 2 == 0 ? consonants : vowels)[scatter(position, seed) % 5];
  return (letter[static_cast<std::size_t>(y)] >> (4 - column) & 1) != 0;
}

constexpr Color pageInk = rgb(0x2B3038);
constexpr Color pageAccent = rgb(0x2563C9);
constexpr Color pageLine = rgb(0xD7DBE2);

/// A white card with a border.
Color card(Point point, const Rectangle& frame) {
  const Rectangle inner{frame.left + 1, frame.top + 1, frame.right - 1, frame.bottom - 1};
  return inner.contains(point, 7) ? rgb(0xFFFFFF) : pageLine;
}

Color titleBar(Point point) {
  if (isInk(point, {{24, 18}, 2.6, 11})) return rgb(0xFFFFFF);
  for (const double left : {420.0, 520.0, 620.0}) {
    if (isInk(point, {{left, 23}, 1.6, 8})) return rgb(0xB9C6E4);
  }
  const Rectangle button{712, 14, 780, 42};
  if (isInk(point, {{725, 23}, 1.4, 5})) return rgb(0xFFFFFF);
  return button.contains(point, 14) ? pageAccent : rgb(0x1D2740);
}

Color sideBar(Point point) {
  if (point.x >= 189) return pageLine;
  const int row = static_cast<int>((point.y - 72) / 38);
  const double top = 72 + row * 38;
  const bool chosen = row == 2;
  if (isInk(point, {{46, top + 13}, 1.6, 8 + row % 3 * 2})) return chosen ? pageAccent : pageInk;
  if (distance(point, {28, top + 19}) < 6) return chosen ? pageAccent : rgb(0xA9B2C0);
  if (!chosen) return rgb(0xFFFFFF);
  return point.x < 4 ? pageAccent : rgb(0xE4EDFC);
}

Color article(Point point, const Rectangle& frame) {
  if (isInk(point, {{236, 98}, 2.4, 24})) return rgb(0x101318);
  for (int line = 0; line < 7; ++line) {
    const int length =
        line == 6 ? 28 : 53 - static_cast<int>(scatter(7, static_cast<std::uint32_t>(line)) % 5);
    if (isInk(point, {{236, 132 + line * 19.0}, 1.6, length})) return pageInk;
  }
  if (isInk(point, {{256, 292}, 1.6, 8})) return rgb(0xFFFFFF);
  if (isInk(point, {{388, 292}, 1.6, 8})) return pageInk;
  if (Rectangle{236, 280, 356, 316}.contains(point, 6)) return pageAccent;
  if (Rectangle{369, 281, 487, 315}.contains(point, 5)) return rgb(0xF0F2F5);
  if (Rectangle{368, 280, 488, 316}.contains(point, 6)) return rgb(0xB8BFCA);
  return card(point, frame);
}

Color chart(Point point, const Rectangle& frame) {
  constexpr std::array<int, 8> heights{62, 88, 54, 120, 97, 143, 110, 158};
  if (isInk(point, {{236, 366}, 1.6, 18})) return pageInk;
  const double left = point.x - 240;
  const auto bar = static_cast<std::size_t>(std::max(0.0, left / 29));
  if (left >= 0 && bar < heights.size() && left - static_cast<double>(bar) * 29 < 19 &&
      point.y < 556 && point.y >= 556 - heights[bar]) {
    return bar == 5 ? rgb(0xE8833A) : rgb(0x6C97DF);
  }
  if (Rectangle{232, 556, 472, 558}.contains(point)) return rgb(0x5B6472);
  const bool onGrid = point.x >= 232 && point.x < 472 && point.y >= 395 && point.y < 556 &&
                      std::fmod(point.y - 395, 40) < 1;
  return onGrid ? rgb(0xE6E9EE) : card(point, frame);
}

Color table(Point point, const Rectangle& frame) {
  const int row = static_cast<int>((point.y - 352) / 32);
  const double top = 352 + row * 32;
  const bool header = row == 0;
  for (const double column : {522.0, 616.0, 710.0}) {
    const int length = column < 600 ? 8 : 5;
    if (isInk(point, {{column, top + 11}, 1.5, length})) return header ? pageAccent : pageInk;
  }
  if (!Rectangle{507, 352, 774, 574}.contains(point)) return card(point, frame);
  if (point.y - top >= 31) return pageLine;
  return row % 2 == 0 && !header ? rgb(0xF6F8FB) : card(point, frame);
}

Color page(Point point) {
  constexpr Rectangle articleFrame{214, 80, 776, 330};
  constexpr Rectangle chartFrame{214, 350, 485, 576};
  constexpr Rectangle tableFrame{505, 350, 776, 576};
  if (point.y < 56) return titleBar(point);
  if (point.x < 190) return sideBar(point);
  if (articleFrame.contains(point, 8)) return article(point, articleFrame);
  if (chartFrame.contains(point, 8)) return chart(point, chartFrame);
  if (tableFrame.contains(point, 8)) return table(point, tableFrame);
  return rgb(0xF3F4F7);
}

// illustration.png: smooth gradients and clean shapes, 640 × 480

Color eveningSky(Point point) {
  const Color upper = mix(rgb(0x28306F), rgb(0xB9548A), ramp(point.y, 0, 190));
  const Color sky = mix(upper, rgb(0xFFC98B), ramp(point.y, 150, 330));
  const double fromSun = distance(point, {430, 236});
  if (fromSun < 46) return mix(rgb(0xFFF3C9), rgb(0xFFDF94), fromSun / 46);
  return mix(sky, rgb(0xFFE7AE), 0.75 * std::exp(-(fromSun - 46) / 70));
}

/// Three discs on a flat base, lit from below.
bool isInCloud(Point point, Point middle) {
  if (point.y > middle.y + 12) return false;
  return distance(point, middle) < 24 || distance(point, {middle.x - 30, middle.y + 10}) < 17 ||
         distance(point, {middle.x + 31, middle.y + 8}) < 19;
}

Color illustration(Point point) {
  constexpr std::array<Color, 4> tops{rgb(0xC06A8C), rgb(0x8F4A7F), rgb(0x5A346B), rgb(0x2E2350)};
  constexpr std::array<Color, 4> feet{rgb(0xE59A93), rgb(0xB0608A), rgb(0x75437A), rgb(0x171433)};
  for (std::size_t layer = tops.size(); layer-- > 0;) {
    const double depth = static_cast<double>(layer);
    const double ridge = 282 + depth * 46 +
                         (22 + depth * 4) * std::sin(point.x / (95 - depth * 9) + depth * 2.1) +
                         9 * std::sin(point.x / 37 + depth);
    if (point.y > ridge) return mix(tops[layer], feet[layer], ramp(point.y, ridge, ridge + 90));
  }
  for (const Point middle : {Point{130, 120}, Point{275, 74}, Point{560, 108}}) {
    if (isInCloud(point, middle)) {
      return mix(rgb(0xF4C9CF), rgb(0xE58FA0), ramp(point.y, middle.y - 24, middle.y + 12));
    }
  }
  return eveningSky(point);
}

// photo.png: noise and fine detail, 640 × 480

double ridgeOf(double x, double base, double height, double width, double seed) {
  return base - height * fractalNoise({x / width, seed}, 6);
}

Color daySky(Point point) {
  const Color sky = mix(rgb(0x3F78BC), rgb(0xC9DDEA), ramp(point.y, 0, 250));
  const double cloud = fractalNoise({point.x / 150, point.y / 62}, 6);
  return mix(sky, rgb(0xF6F6F3), ramp(cloud, 0.5, 0.78));
}

Color meadow(Point point) {
  // Perspective: what is far up the picture is small.
  const double depth = 40 / (point.y - 285);
  const double blades = fractalNoise({point.x * depth * 0.9, point.y / 2.5}, 4);
  const double patches = fractalNoise({point.x / 90, point.y / 22}, 4);
  const Color grass = mix(rgb(0x3E5A22), rgb(0xA0A24B), ramp(patches, 0.3, 0.75));
  return scaled(grass, 0.45 + 0.95 * blades);
}

Color landscape(Point point) {
  if (point.y > ridgeOf(point.x, 372, 60, 260, 8.5)) return meadow(point);
  if (point.y > ridgeOf(point.x, 352, 110, 120, 5.5)) {
    const double leaves = fractalNoise({point.x / 7, point.y / 7}, 4);
    return scaled(mix(rgb(0x24381F), rgb(0x4F6B35), leaves), 0.5 + 0.9 * leaves);
  }
  if (point.y > ridgeOf(point.x, 330, 210, 210, 2.5)) {
    const double rock = fractalNoise({point.x / 22 + point.y / 30, point.y / 18}, 5);
    const Color stone = mix(rgb(0x5C6B80), rgb(0xA5ADB6), ramp(rock, 0.3, 0.75));
    return mix(stone, rgb(0xB4C6D8), ramp(point.y, 180, 330) * 0.55);
  }
  return daySky(point);
}

Color photo(Point point) {
  const auto column = static_cast<std::uint32_t>(point.x);
  const auto row = static_cast<std::uint32_t>(point.y);
  // One grain per pixel: the sum of four throws is close to a normal distribution.
  const std::uint32_t bits = scatter(column, row + 5000);
  const double throws = (bits & 0xFF) + (bits >> 8 & 0xFF) + (bits >> 16 & 0xFF) + (bits >> 24);
  const double grain = (throws / 510 - 1) * 0.035;
  const double vignette = 1 - 0.28 * std::pow(distance(point, {320, 240}) / 400, 2);
  const Color scene = scaled(landscape(point), vignette);
  return {scene.r + grain, scene.g + grain, scene.b + grain * 1.2};
}

bool write(const std::string& path, const RGBABuffer& picture) {
  const Bytes file = PNGQuantEncoder::encodeLossless(
      picture, {.mode = EncodingPlan::Lossless{}, .effort = EncodingPlan::Effort::thorough});
  std::ofstream stream(path, std::ios::binary);
  stream.write(reinterpret_cast<const char*>(file.data()),
               static_cast<std::streamsize>(file.size()));
  return static_cast<bool>(stream.flush());
}

bool drawAll(const std::string& folder) {
  return write(folder + "/logo.png", paint(256, 256, logo)) &&
         write(folder + "/page.png", paint(800, 600, page)) &&
         write(folder + "/illustration.png", paint(640, 480, illustration)) &&
         write(folder + "/photo.png", paint(640, 480, photo));
}

}  // namespace
}  // namespace orvane::examples

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: draw-examples <folder>\n", stderr);
    return 64;
  }
  return orvane::examples::drawAll(argv[1]) ? 0 : 1;
}
