#include "platform/graphics/GammaEncode.h"

#include <cmath>
#include <vector>

#include "platform/graphics/RowRenderer.h"

namespace orvane {
namespace {

/// IEC 61966-2-1, from light to coded value, both 0…1.
double encoded(double light) {
  return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

/// The coded values of all 16-bit amounts of light.
std::vector<std::uint16_t> makeCurve() {
  std::vector<std::uint16_t> curve(65536);
  for (std::size_t light = 0; light < curve.size(); ++light) {
    curve[light] = static_cast<std::uint16_t>(
        std::lround(encoded(static_cast<double>(light) / 65535) * 65535));
  }
  return curve;
}

}  // namespace

Image gammaEncode(const Image& linear) {
  Image image{.width = linear.width,
              .height = linear.height,
              .bitsPerComponent = 16,
              .alpha = linear.alpha == AlphaKind::none ? AlphaKind::none : AlphaKind::straight,
              .colorSpace = linear.colorSpace->withSRGBCurve()};
  const std::vector<std::uint16_t> curve = makeCurve();
  // Into the picture's own space the renderer leaves the numbers as they are.
  RowRenderer renderer(linear, linear.colorSpace, 16, RowRenderer::AlphaForm::straight);
  auto* row = reinterpret_cast<std::uint16_t*>(allocatePackedRows(image));
  for (std::size_t y = 0; y < image.height; ++y, row += image.width * 4) {
    renderer.render(y, row);
    for (std::size_t x = 0; x < image.width; ++x) {
      for (std::size_t c = 0; c < 3; ++c) row[x * 4 + c] = curve[row[x * 4 + c]];
    }
  }
  return image;
}

}  // namespace orvane
