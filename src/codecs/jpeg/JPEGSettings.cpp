#include "codecs/jpeg/JPEGSettings.h"

#include <algorithm>
#include <cmath>

#include "codecs/QualityTable.h"

namespace orvane {
namespace {

/// From this quality on, a photograph of the same score is smaller with its chroma whole: halved
/// chroma loses what finer steps cannot bring back.
constexpr double fullChromaQuality = 0.93;

/// Photographs of blossoms and of neon lights stay below this share; pages with coloured text lie
/// above it.
constexpr double fullChromaEdgeShare = 0.003;

/// How quantisation steps grow with the frequency. They rise faster than those of the example
/// tables in ITU-T T.81, annex K, which are older than any measure of perceived quality.
struct StepShape {
  double constant;  ///< step of the block's mean, beside 1 for the lowest frequencies
  double radial;    ///< added at the end of a row or column of coefficients
  double exponent;  ///< of its growth
  double diagonal;  ///< added at the highest frequency both ways

  /// The step of the coefficient of horizontal frequency u and vertical frequency v, 0…7.
  double step(std::size_t u, std::size_t v) const {
    if (u == 0 && v == 0) return constant;
    return 1 + radial * std::pow(std::hypot(u, v) / 7, exponent) +
           diagonal * static_cast<double>(u * v) / 49;
  }
};

constexpr StepShape lumaShape{.constant = 0.92, .radial = 5.2, .exponent = 1.25, .diagonal = 2.1};

/// Halved chroma has lost its high frequencies already and is coded a little finer than luma. Full
/// chroma is coded coarser, since the eye sees less of it.
constexpr StepShape halvedChromaShape{
    .constant = 0.75, .radial = 8, .exponent = 1.5, .diagonal = 4};
constexpr double halvedChromaScale = 0.9;
constexpr StepShape fullChromaShape{.constant = 0.7, .radial = 12, .exponent = 1.5, .diagonal = 8};
constexpr double fullChromaScale = 2;

JPEGSettings::Steps steps(const StepShape& shape, double scale) {
  JPEGSettings::Steps result;
  for (std::size_t i = 0; i < result.size(); ++i) {
    const double step = std::round(scale * shape.step(i % 8, i / 8));
    result[i] = static_cast<unsigned>(std::clamp(step, 1.0, 255.0));
  }
  return result;
}

}  // namespace

JPEGSettings JPEGSettings::forPicture(double quality, double chromaEdgeShare) {
  const double scale = settingAt(QualityTables::jpegStepScale(), quality);
  const bool needsFullChroma =
      quality >= fullChromaQuality || chromaEdgeShare > fullChromaEdgeShare;
  const double chromaScale = scale * (needsFullChroma ? fullChromaScale : halvedChromaScale);
  const StepShape& chromaShape = needsFullChroma ? fullChromaShape : halvedChromaShape;
  return {.lumaSteps = steps(lumaShape, scale),
          .chromaSteps = steps(chromaShape, chromaScale),
          .lumaScale = scale,
          .chromaScale = chromaScale,
          .chroma = needsFullChroma ? Chroma::full : Chroma::halved};
}

}  // namespace orvane
