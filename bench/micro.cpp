#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstring>

#include "codecs/ImageDestination.h"
#include "codecs/look/PictureSample.h"
#include "codecs/look/StructuralScore.h"
#include "codecs/png/PNGWriter.h"
#include "picture/RGBABuffer.h"
#include "pipeline/ImageAnalyzer.h"
#include "platform/graphics/CodePoints.h"
#include "platform/graphics/Flatten.h"
#include "platform/graphics/Orient.h"
#include "platform/graphics/RowRenderer.h"

namespace orvane {
namespace {

constexpr std::size_t width = 2560;
constexpr std::size_t height = 1600;

struct Kind {
  int bitsPerComponent = 8;
  AlphaKind alpha = AlphaKind::none;
  CodePoints codePoints = sRGBCodePoints;
};

double grain(std::size_t x, std::size_t y) {
  return static_cast<double>((x * 2654435761U + y * 40503U * 65537U) >> 7 & 15);
}

/// 0…255: waves, edges and grain, as a photograph has them.
double sample(std::size_t x, std::size_t y, std::size_t channel) {
  const double phase = static_cast<double>(channel);
  const double wave =
      std::sin(static_cast<double>(x) / 97 + phase) * std::cos(static_cast<double>(y) / 61 - phase);
  const double edge = (x / 160 + y / 120) % 2 == 0 ? 20 : -20;
  return 120 + 80 * wave + edge + grain(x, y);
}

template <typename Component>
void draw(Image& image) {
  constexpr double scale = sizeof(Component) == 1 ? 1 : 257;
  auto* out = reinterpret_cast<Component*>(allocatePackedRows(image));
  for (std::size_t y = 0; y < image.height; ++y) {
    for (std::size_t x = 0; x < image.width; ++x) {
      for (std::size_t channel = 0; channel < 3; ++channel) {
        *out++ = static_cast<Component>(scale * sample(x, y, channel));
      }
      const bool isSeeThrough = image.alpha != AlphaKind::none && x < image.width / 2;
      *out++ = static_cast<Component>(scale * (isSeeThrough ? 128 : 255));
    }
  }
}

Image drawn(const Kind& kind) {
  Image image{.width = width,
              .height = height,
              .bitsPerComponent = kind.bitsPerComponent,
              .alpha = kind.alpha,
              .colorSpace = ColorSpace::fromCodePoints(kind.codePoints, ColorSpace::Model::rgb)};
  if (kind.bitsPerComponent == 8) {
    draw<std::uint8_t>(image);
  } else {
    draw<std::uint16_t>(image);
  }
  return image;
}

void countPixels(benchmark::State& state, std::size_t pixels = width * height) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(pixels));
}

void copying(benchmark::State& state) {
  const Image image = drawn({});
  Image copy = image;
  std::uint8_t* const out = allocatePackedRows(copy);
  while (state.KeepRunning()) {
    std::memcpy(out, image.pixels.get(), image.bytesPerRow * image.height);
    benchmark::ClobberMemory();
  }
  countPixels(state);
}
BENCHMARK(copying)->Name("memcpy");

void analyzing(benchmark::State& state) {
  const RGBABuffer buffer(drawn({}));
  while (state.KeepRunning()) benchmark::DoNotOptimize(ImageAnalyzer::analyze(buffer));
  countPixels(state);
}
BENCHMARK(analyzing)->Name("analysis");

void measuring(benchmark::State& state) {
  const Image image = drawn({});
  const ImageCharacteristics characteristics = ImageAnalyzer::analyze(RGBABuffer(image));
  while (state.KeepRunning()) benchmark::DoNotOptimize(measure(image, characteristics));
  countPixels(state);
}
BENCHMARK(measuring)->Name("measurements");

void rendering(benchmark::State& state, Kind kind) {
  const Image image = drawn(kind);
  while (state.KeepRunning()) benchmark::DoNotOptimize(rendered(image, ColorSpace::sRGB(), 8));
  countPixels(state);
}
BENCHMARK_CAPTURE(rendering, ofDisplayP3, Kind{.codePoints = displayP3CodePoints});
BENCHMARK_CAPTURE(rendering, of16Bits, Kind{.bitsPerComponent = 16});

void flattening(benchmark::State& state, Backdrop backdrop) {
  const Image image = drawn({.alpha = AlphaKind::straight});
  while (state.KeepRunning()) benchmark::DoNotOptimize(flatten(image, backdrop));
  countPixels(state);
}
BENCHMARK_CAPTURE(flattening, onWhite, Backdrop::white);
BENCHMARK_CAPTURE(flattening, premultiplied, Backdrop::none);

void dithering(benchmark::State& state) {
  const Image image = drawn({.bitsPerComponent = 16});
  while (state.KeepRunning()) benchmark::DoNotOptimize(RGBABuffer(image));
  countPixels(state);
}
BENCHMARK(dithering)->Name("dither of 16 bits");

void turning(benchmark::State& state) {
  constexpr int quarterTurn = 6;  // CIPA DC-008, tag 0x0112
  const Image image = drawn({});
  while (state.KeepRunning()) benchmark::DoNotOptimize(orient(image, quarterTurn));
  countPixels(state);
}
BENCHMARK(turning)->Name("quarter turn");

void filtering(benchmark::State& state, PNGWriter::Filter filter) {
  constexpr std::size_t channels = 4;
  const Image image = drawn({});
  Bytes filtered(image.bytesPerRow);
  while (state.KeepRunning()) {
    for (std::size_t y = 1; y < height; ++y) {
      benchmark::DoNotOptimize(PNGWriter::apply(filter, image.row(y), image.row(y - 1),
                                                filtered.size(), channels, filtered.data()));
    }
  }
  countPixels(state);
}
BENCHMARK_CAPTURE(filtering, pngSub, PNGWriter::Filter::sub);
BENCHMARK_CAPTURE(filtering, pngUp, PNGWriter::Filter::up);
BENCHMARK_CAPTURE(filtering, pngAverage, PNGWriter::Filter::average);
BENCHMARK_CAPTURE(filtering, pngPaeth, PNGWriter::Filter::paeth);

void encodingJPEG(benchmark::State& state) {
  const Image image = drawn({});
  const PictureMeasurements measurements =
      measure(image, ImageAnalyzer::analyze(RGBABuffer(image)));
  while (state.KeepRunning()) {
    benchmark::DoNotOptimize(jpegDestination.encode(image, measurements, 0.75, 1));
  }
  countPixels(state);
}
BENCHMARK(encodingJPEG)->Name("JPEG");

/// In pixels of the sample, which is a small part of the picture.
void scoring(benchmark::State& state) {
  const Image sample = sampleOf(drawn({}), jpegDestination.sampleShape).value();
  const StructuralScore score(sample);
  while (state.KeepRunning()) benchmark::DoNotOptimize(score.of(sample));
  countPixels(state, sample.width * sample.height);
}
BENCHMARK(scoring)->Name("score");

}  // namespace
}  // namespace orvane
