#include "support/TestImages.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <random>
#include <stdexcept>

namespace orvane::test {

namespace {

/// Calls `take` with the absolute difference of every channel of every pixel.
template <typename Take>
void forEachDifference(const Image& left, const Image& right, const Take& take) {
  if (left.width != right.width || left.height != right.height || left.layout != right.layout ||
      left.bitsPerComponent != right.bitsPerComponent) {
    throw std::invalid_argument("pictures of different shape");
  }
  for (std::size_t y = 0; y < left.height; ++y) {
    for (std::size_t x = 0; x < left.width; ++x) {
      const Pixel a = pixelAt(left, x, y);
      const Pixel b = pixelAt(right, x, y);
      for (std::size_t c = 0; c < channelCount(left.layout); ++c) take(std::abs(a[c] - b[c]));
    }
  }
}

}  // namespace

Image drawImage(std::size_t width, std::size_t height, ChannelLayout layout, AlphaKind alpha,
                int bitsPerComponent, const ColorSpacePtr& colorSpace,
                const std::function<Pixel(std::size_t, std::size_t)>& pixelAt) {
  Image image{.width = width,
              .height = height,
              .bitsPerComponent = bitsPerComponent,
              .layout = layout,
              .alpha = alpha,
              .colorSpace = colorSpace};
  std::uint8_t* pixels = allocatePackedRows(image);
  const std::size_t channels = channelCount(layout);
  std::size_t at = 0;
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t x = 0; x < width; ++x) {
      const Pixel pixel = pixelAt(x, y);
      for (std::size_t channel = 0; channel < channels; ++channel, ++at) {
        if (bitsPerComponent == 8) {
          pixels[at] = static_cast<std::uint8_t>(pixel[channel]);
        } else {
          std::memcpy(pixels + at * 2, &pixel[channel], 2);
        }
      }
    }
  }
  return image;
}

Pixel pixelAt(const Image& image, std::size_t x, std::size_t y) {
  Pixel pixel{};
  const std::uint8_t* at = image.row(y) + x * image.bytesPerPixel();
  for (std::size_t channel = 0; channel < channelCount(image.layout); ++channel) {
    if (image.bitsPerComponent == 8) {
      pixel[channel] = at[channel];
    } else {
      std::memcpy(&pixel[channel], at + channel * 2, 2);
    }
  }
  return pixel;
}

Image gradientImage(std::size_t width, std::size_t height) {
  const auto slope = [](std::size_t at, std::size_t size) {
    return static_cast<std::uint16_t>(size < 2 ? 0 : at * 255 / (size - 1));
  };
  return drawImage(width, height, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
                   [&](std::size_t x, std::size_t y) -> Pixel {
                     return {slope(x, width), slope(y, height),
                             static_cast<std::uint16_t>(255 - slope(x, width)), 255};
                   });
}

Image noisyImage(std::size_t width, std::size_t height) {
  std::mt19937 random(20250101);  // the standard fixes its sequence
  const auto noise = [&] { return static_cast<int>(random() % 41) - 20; };
  return drawImage(
      width, height, ChannelLayout::rgba, AlphaKind::none, 8, ColorSpace::sRGB(),
      [&](std::size_t x, std::size_t y) -> Pixel {
        const int base = static_cast<int>((x * 3 + y * 2) % 400) - 72;
        const auto value = [&](int offset) {
          return static_cast<std::uint16_t>(std::clamp(base + offset + noise(), 0, 255));
        };
        return {value(0), value(20), value(-20), 255};
      });
}

Image patchImage(std::size_t width, std::size_t height, const ColorSpacePtr& colorSpace) {
  static constexpr std::array<Pixel, 6> colors{{{220, 30, 40, 255},
                                                {30, 180, 60, 255},
                                                {40, 60, 210, 255},
                                                {240, 200, 30, 255},
                                                {128, 128, 128, 255},
                                                {250, 245, 240, 255}}};
  return drawImage(
      width, height, ChannelLayout::rgba, AlphaKind::none, 8, colorSpace,
      [&](std::size_t x, std::size_t y) { return colors[x * 3 / width + (y * 2 / height) * 3]; });
}

Image alphaGradientImage(std::size_t width, std::size_t height) {
  return drawImage(width, height, ChannelLayout::rgba, AlphaKind::straight, 8, ColorSpace::sRGB(),
                   [&](std::size_t x, std::size_t y) -> Pixel {
                     const auto alpha =
                         static_cast<std::uint16_t>(width < 2 ? 128 : x * 255 / (width - 1));
                     return {static_cast<std::uint16_t>(y * 255 / height), 90, 200, alpha};
                   });
}

double meanDifference(const Image& left, const Image& right) {
  double sum = 0;
  forEachDifference(left, right, [&](int difference) { sum += difference; });
  return sum / static_cast<double>(left.width * left.height * channelCount(left.layout));
}

int maximumDifference(const Image& left, const Image& right) {
  int largest = 0;
  forEachDifference(left, right, [&](int difference) { largest = std::max(largest, difference); });
  return largest;
}

}  // namespace orvane::test
