#include "codecs/look/Look.h"

#include <algorithm>
#include <cmath>

#include "codecs/ImageSource.h"
#include "codecs/QualityTable.h"
#include "codecs/look/PictureSample.h"
#include "codecs/look/StructuralScore.h"
#include "platform/graphics/RowRenderer.h"

namespace orvane {
namespace {

/// How far, in points of the score, a picture may be off before a second sample is encoded. It
/// counts in full from twice as far on, so that sizes rise with the quality.
constexpr double farOff = 2.5;

/// How far a picture may look better than photographs do on the mean.
struct Margin {
  double points;        ///< of the score
  double partOfExcess;  ///< 0…1
  double forExcess(double excess) const { return points + partOfExcess * std::max(excess, 0.0); }
};

/// Samples of pictures without grain score too high: the seams between their bands hide losses, the
/// more the narrower the bands are. Those of screens and drawings do so the more, the better they
/// look: some fell below the mean when less than half of their excess was kept.
Margin marginFor(const ImageCharacteristics& characteristics, std::size_t band) {
  constexpr double grain = 4;                // noise from which on seams are nothing special
  constexpr double seamsWithoutGrain = 240;  // points for bands of one pixel
  constexpr double graphicsPoints = 1;       // kept in any case
  constexpr double graphicsPartWithoutGrain = 0.5;
  const double smoothness = std::max(1 - characteristics.noiseLevel / grain, 0.0);
  const double seams = smoothness * seamsWithoutGrain / static_cast<double>(band);
  if (isPhotograph(characteristics.contentClass)) return {seams, 0};
  return {std::max(seams, graphicsPoints), smoothness * graphicsPartWithoutGrain};
}

/// One sample's result: the mean score of photographs at the quality that was coded, and this
/// picture's.
struct Point {
  double mean;
  double score;
};

/// Encodes a picture at a quality and scores what it shows then.
class Sampling {
 public:
  Sampling(const ImageDestination& destination, const Image& sample,
           const PictureMeasurements& measurements)
      : destination_(destination), sample_(sample), measurements_(measurements), score_(sample) {}

  /// The mean scores of photographs' samples.
  std::span<const QualityPoint> means() const { return destination_.sampleScores(); }

  Point at(double quality) const {
    return {settingAt(means(), destination_.codedQuality(quality)), scoreAt(quality)};
  }

 private:
  double scoreAt(double quality) const {
    const Bytes file = destination_.encodeSample(sample_, measurements_, quality);
    const Image coded = ImageSource::create(file)->image();
    // The numbers as they are: the file may describe the space of the sample by another profile.
    return score_.of(rendered(coded, renderingSpace(coded.colorSpace), 8));
  }

  const ImageDestination& destination_;
  const Image& sample_;
  const PictureMeasurements& measurements_;
  StructuralScore score_;
};

/// The mean score at which this picture's is `aim`, on the line through two points.
double meanFor(double aim, Point first, Point second) {
  const double slope = (second.score - first.score) / (second.mean - first.mean);
  return second.mean + (aim - second.score) / std::clamp(slope, 0.5, 2.0);
}

/// The quality at which the score lies between the mean at `quality` and what `margin` allows
/// above.
double movedQuality(const Sampling& sampling, double quality, const Margin& margin) {
  const auto means = sampling.means();
  const Point first = sampling.at(quality);
  const double mean = settingAt(means, quality);
  // As if this picture's scores rose as the mean does.
  const double score = mean + (first.score - first.mean);
  const double aim = std::clamp(score, mean, mean + margin.forExcess(score - mean));
  const double guess = qualityAt(means, mean + aim - score);
  const double weight = std::clamp(std::abs(aim - score) / farOff - 1, 0.0, 1.0);
  if (weight == 0) return guess;
  const Point second = sampling.at(guess);
  if (second.mean == first.mean) return guess;
  return std::lerp(guess, qualityAt(means, meanFor(aim, first, second)), weight);
}

}  // namespace

double qualityForLook(const ImageDestination& destination, const Image& image,
                      const PictureMeasurements& measurements, double quality) try {
  if (quality >= 1 || image.alpha != AlphaKind::none) return quality;
  const auto sample = sampleOf(image, destination.sampleShape);
  if (!sample) return quality;
  const Sampling sampling(destination, *sample, measurements);
  const ImageCharacteristics& characteristics = measurements.characteristics;
  const double moved = movedQuality(
      sampling, quality, marginFor(characteristics, destination.sampleShape.bandOf(image)));
  // The finest settings are for those who ask for them.
  const double kept = std::lerp(quality, moved, std::min((1 - quality) / 0.05, 1.0));
  return isPhotograph(characteristics.contentClass) ? kept : std::min(quality, kept);
} catch (const UnwritableImage&) {
  return quality;
} catch (const UnreadableImage&) {
  return quality;
}

}  // namespace orvane
