#include "platform/imageio/JPEGSettings.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "platform/imageio/QualityTable.h"

namespace orvane {
namespace {

/// From here on the loss of chroma detail shows on photographs too.
constexpr double fullChromaQuality = 0.90;

/// More than the blossoms and the neon lights of photographs reach, less than any page with
/// coloured text on it.
constexpr double fullChromaEdgeShare = 0.003;

/// How much coarser the coefficient of horizontal and vertical frequency u, v (0…7) may be than the
/// lowest ones. Rises faster towards the high frequencies than the example tables of ITU-T T.81,
/// annex K, which are older than any measure of what is seen.
double relativeStep(std::size_t u, std::size_t v) {
  const double frequency = std::hypot(u, v) / 7;
  return 1 + 8 * std::pow(frequency, 1.5) + 4 * static_cast<double>(u * v) / 49;
}

JPEGSettings::Steps steps(double scale, double constantPart) {
  JPEGSettings::Steps result;
  for (std::size_t i = 0; i < result.size(); ++i) {
    const double relative = i == 0 ? constantPart : relativeStep(i % 8, i / 8);
    result[i] = static_cast<unsigned>(std::clamp(std::round(scale * relative), 1.0, 255.0));
  }
  return result;
}

}  // namespace

JPEGSettings JPEGSettings::forPicture(double quality, double chromaEdgeShare) {
  const double scale = settingAt(QualityTables::jpegStepScale(), quality);
  const bool needsFullChroma =
      quality >= fullChromaQuality || chromaEdgeShare > fullChromaEdgeShare;
  return {.lumaSteps = steps(scale, 0.8),
          .chromaSteps = steps(scale * 0.8, 0.75),
          .chroma = needsFullChroma ? Chroma::full : Chroma::halved};
}

}  // namespace orvane
