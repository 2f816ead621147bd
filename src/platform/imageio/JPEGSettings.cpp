#include "platform/imageio/JPEGSettings.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace orvane {
namespace {

// ITU-T T.81 annex K.1.
constexpr JPEGSettings::Steps lumaModel{16, 11, 10, 16, 24,  40,  51,  61,   //
                                        12, 12, 14, 19, 26,  58,  60,  55,   //
                                        14, 13, 16, 24, 40,  57,  69,  56,   //
                                        14, 17, 22, 29, 51,  87,  80,  62,   //
                                        18, 22, 37, 56, 68,  109, 103, 77,   //
                                        24, 35, 55, 64, 81,  104, 113, 92,   //
                                        49, 64, 78, 87, 103, 121, 120, 101,  //
                                        72, 92, 95, 98, 112, 100, 103, 99};
constexpr JPEGSettings::Steps chromaModel{17, 18, 24, 47, 99, 99, 99, 99,  //
                                          18, 21, 26, 66, 99, 99, 99, 99,  //
                                          24, 26, 56, 99, 99, 99, 99, 99,  //
                                          47, 66, 99, 99, 99, 99, 99, 99,  //
                                          99, 99, 99, 99, 99, 99, 99, 99,  //
                                          99, 99, 99, 99, 99, 99, 99, 99,  //
                                          99, 99, 99, 99, 99, 99, 99, 99,  //
                                          99, 99, 99, 99, 99, 99, 99, 99};

/// From here on the loss of chroma detail shows on photographs too.
constexpr double fullChromaQuality = 0.90;

/// Photographs stay below, blossoms and neon signs among them. Drawings and screens with coloured
/// text on them lie above: from here on 4:2:0 needs as many bytes as 4:4:4 for the same look.
constexpr double fullChromaEdgeShare = 0.003;

/// What the model's steps are multiplied with for libjpeg's quality 1…100.
double scale(double libjpegQuality) {
  return libjpegQuality < 50 ? 50 / libjpegQuality : 2 - libjpegQuality / 50;
}

JPEGSettings::Steps scaled(const JPEGSettings::Steps& model, double scale) {
  JPEGSettings::Steps steps;
  std::ranges::transform(model, steps.begin(), [scale](unsigned step) {
    return static_cast<unsigned>(std::clamp(std::floor(step * scale + 0.5), 1.0, 255.0));
  });
  return steps;
}

}  // namespace

JPEGSettings JPEGSettings::forPicture(double quality, double chromaEdgeShare) {
  const double stepScale = scale(std::clamp(std::round(quality * 100), 1.0, 100.0));
  const bool needsFullChroma =
      quality >= fullChromaQuality || chromaEdgeShare > fullChromaEdgeShare;
  return {.lumaSteps = scaled(lumaModel, stepScale),
          .chromaSteps = scaled(chromaModel, stepScale),
          .chroma = needsFullChroma ? Chroma::full : Chroma::halved};
}

}  // namespace orvane
