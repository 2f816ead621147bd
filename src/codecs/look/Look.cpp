#include "codecs/look/Look.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <span>

#include "codecs/ImageSource.h"
#include "codecs/QualityTable.h"
#include "codecs/look/PictureSample.h"
#include "codecs/look/SampleScore.h"

namespace orvane {
namespace {

/// How far a picture may look better than photographs do on the mean.
struct Margin {
  double points;        ///< of the score
  double partOfExcess;  ///< 0…1
  bool keepsWorse;      ///< leaves pictures alone that look worse
  double reserve;       ///< of quality that the settings have, and that is taken back

  /// The part of an excess over the mean that a picture keeps; 0 where it is negative.
  double keptOf(double excess) const {
    return std::clamp(excess, 0.0, points + partOfExcess * std::max(excess, 0.0));
  }
};

/// Samples of pictures without grain score too high: the seams between their bands hide losses, the
/// more the narrower the bands are. Those of screens and drawings score up to 5 points too high,
/// the more the better they look: some fell below the mean when less than half of their excess was
/// kept.
Margin marginFor(const ImageCharacteristics& characteristics, std::size_t band) {
  constexpr double grain = 4;                // noise from which on seams are nothing special
  constexpr double seamsWithoutGrain = 240;  // points for bands of one pixel
  constexpr double graphicsPoints = 5;       // kept in any case
  constexpr double graphicsPartWithoutGrain = 0.5;
  // Two photographs of three are planned 0.04 lower than asked, and the settings make up for it, so
  // that the mean of all is what is asked. Half of this is taken back: each photograph is near to
  // the look of its plan, and the mean near to the look that is asked.
  constexpr double photographsReserve = 0.014;
  const double smoothness = std::max(1 - characteristics.noiseLevel / grain, 0.0);
  const double seams = smoothness * seamsWithoutGrain / static_cast<double>(band);
  if (isPhotograph(characteristics.contentClass)) return {seams, 0, false, photographsReserve};
  return {std::max(seams, graphicsPoints), smoothness * graphicsPartWithoutGrain, true, 0};
}

/// How one picture's score rises with the mean score of photographs: lines through the scores of
/// its samples, up to where all pictures look alike. The qualities of the samples are fixed, so
/// that the setting rises with the quality that is asked. A sample is coded when its score is
/// needed.
class ScoreCurve {
 public:
  /// From this score on all pictures look alike.
  static constexpr double allAlike = 95;

  ScoreCurve(const ImageDestination& destination, const Image& sample,
             const PictureMeasurements& measurements)
      : destination_(destination), sampleScore_(destination, sample, measurements) {}

  double scoreAt(double mean) { return read(mean, &Point::mean, &Point::score); }

  /// The mean at which the score is `wanted`.
  double meanAt(double wanted) { return read(wanted, &Point::score, &Point::mean); }

 private:
  struct Point {
    double mean;
    double score;
  };

  /// Most pictures need the last one only, or the last two.
  static constexpr std::array sampledQualities{0.0, 0.3, 0.7};

  double read(double value, double Point::*from, double Point::*to) {
    std::size_t number = sampledQualities.size() - 1;
    while (number > 0 && value < point(number).*from) --number;
    const Point low = point(number);
    const Point high = point(number + 1);
    return std::lerp(low.*to, high.*to, (value - low.*from) / (high.*from - low.*from));
  }

  Point point(std::size_t number) {
    if (number == sampledQualities.size()) return {allAlike, allAlike};
    if (!points_[number]) points_[number] = sampled(sampledQualities[number], point(number + 1));
    return *points_[number];
  }

  /// Scores below the next point's. Those that hardly fall say nothing about lower qualities.
  Point sampled(double quality, const Point& next) const {
    constexpr double leastSlope = 0.25;
    const double mean = settingAt(destination_.sampleScores(), destination_.codedQuality(quality));
    const double most = next.score - leastSlope * (next.mean - mean);
    return {mean, std::min(sampleScore_.at(quality), most)};
  }

  const ImageDestination& destination_;
  SampleScore sampleScore_;
  std::array<std::optional<Point>, sampledQualities.size()> points_;
};

/// The quality at which the score is the mean one at `quality`, or above it by the margin.
double movedQuality(ScoreCurve& curve, std::span<const QualityPoint> means, double quality,
                    const Margin& margin) {
  const double mean = settingAt(means, quality - margin.reserve);
  if (mean >= ScoreCurve::allAlike) return quality;
  // Without a margin nothing depends on the score at the mean, and no sample is coded for it.
  const double excess = margin.points > 0 ? curve.scoreAt(mean) - mean : 0;
  if (excess < 0 && margin.keepsWorse) return quality;
  return qualityAt(means, curve.meanAt(mean + margin.keptOf(excess)));
}

/// The finest settings are for those who ask for them: a picture is lowered the less the nearer
/// `quality` is to 1.
double limited(double moved, double quality) {
  if (moved > quality) return moved;
  return std::lerp(quality, moved, std::min((1 - quality) / 0.05, 1.0));
}

}  // namespace

double qualityForLook(const ImageDestination& destination, const Image& image,
                      const PictureMeasurements& measurements, double quality) try {
  if (quality >= 1 || image.alpha != AlphaKind::none) return quality;
  const auto sample = sampleOf(image, destination.sampleShape);
  if (!sample) return quality;
  ScoreCurve curve(destination, *sample, measurements);
  const double moved =
      movedQuality(curve, destination.sampleScores(), quality,
                   marginFor(measurements.characteristics, destination.sampleShape.bandOf(image)));
  return limited(moved, quality);
} catch (const UnwritableImage&) {
  return quality;
} catch (const UnreadableImage&) {
  return quality;
}

}  // namespace orvane
