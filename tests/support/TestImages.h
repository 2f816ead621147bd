#pragma once

#include <array>
#include <cstdint>
#include <functional>

#include "platform/graphics/Image.h"

namespace orvane::test {

/// One pixel's channels, in the layout's order, in the range of the picture's depth.
using Pixel = std::array<std::uint16_t, 4>;

/// A picture drawn by `pixelAt(x, y)`, rows packed.
Image drawImage(std::size_t width, std::size_t height, ChannelLayout layout, AlphaKind alpha,
                int bitsPerComponent, const ColorSpacePtr& colorSpace,
                const std::function<Pixel(std::size_t x, std::size_t y)>& pixelAt);

/// The channels of one pixel of `image`.
Pixel pixelAt(const Image& image, std::size_t x, std::size_t y);

/// An opaque 8-bit sRGB picture (rgba without alpha) with smooth, different slopes per channel.
Image gradientImage(std::size_t width, std::size_t height);

/// An opaque 8-bit sRGB picture of noise around a gradient: what photographs are to a codec. The
/// same every time.
Image noisyImage(std::size_t width, std::size_t height);

/// An opaque 8-bit picture of six flat patches of strong colours, two rows of three.
Image patchImage(std::size_t width, std::size_t height, const ColorSpacePtr& colorSpace);

/// A straight-alpha 8-bit sRGB picture: a colour gradient over alpha from 0 (left) to 255 (right).
Image alphaGradientImage(std::size_t width, std::size_t height);

/// Mean absolute difference over all channels of two pictures of the same size, layout and depth.
double meanDifference(const Image& left, const Image& right);

/// The largest difference of any channel of two pictures of the same size, layout and depth.
int maximumDifference(const Image& left, const Image& right);

}  // namespace orvane::test
