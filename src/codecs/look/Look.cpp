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

/// The look that a picture gets, beside the mean look of photographs at the quality that is asked.
struct Aim {
  double reserve;       ///< is taken off the quality first
  double points;        ///< of the score, that a picture may keep above the mean
  double partOfExcess;  ///< 0…1, that it may keep as well
  bool mayBeRaised;     ///< to a higher quality

  /// How far above the mean a picture stays that is above it by `excess`; 0 where it is below.
  double keptOf(double excess) const {
    return std::max(std::min(excess, points + partOfExcess * excess), 0.0);
  }
};

/// Samples of pictures without grain score too high: the seams between their bands hide losses, the
/// more the narrower the bands are. Those of screens and drawings score up to 5 points too high,
/// the more the better they look: some fell below the mean when less than half of their excess was
/// kept.
Aim aimFor(const ImageCharacteristics& characteristics, std::size_t band) {
  constexpr double grain = 4;                // noise from which on seams are nothing special
  constexpr double seamsWithoutGrain = 240;  // points for bands of one pixel
  constexpr double graphicsPoints = 4;       // kept in any case
  constexpr double graphicsPartWithoutGrain = 0.5;
  // Two photographs of three are planned 0.04 lower than asked, 0.027 on the mean of all, and the
  // settings make up for it, so that the mean look is what is asked. Half of the 0.027 is taken
  // back: each photograph is near to the look of its plan, and the mean near to what is asked.
  constexpr double photographsReserve = 0.014;
  const double smoothness = std::max(1 - characteristics.noiseLevel / grain, 0.0);
  if (!isPhotograph(characteristics.contentClass)) {
    return {0, graphicsPoints, smoothness * graphicsPartWithoutGrain, false};
  }
  const double seams = smoothness * seamsWithoutGrain / static_cast<double>(band);
  return {photographsReserve, seams, 0, true};
}

/// How one picture's score rises with the mean score of photographs: lines through the scores of
/// its samples, up to where all pictures look alike. The qualities of the samples are fixed, so
/// that the setting rises with the quality that is asked. A sample is coded when its score is
/// needed.
class ScoreCurve {
 public:
  /// From this score on all pictures look alike.
  static constexpr double allAlike = 95;

  ScoreCurve(std::span<const QualityPoint> means, const SampleScore& sampleScore)
      : means_(means), sampleScore_(sampleScore) {}

  double scoreAt(double mean) { return read(mean, &Point::mean, &Point::score); }

  /// The mean at which the score is `wanted`.
  double meanAt(double wanted) { return read(wanted, &Point::score, &Point::mean); }

 private:
  struct Point {
    double mean;
    double score;
  };

  /// Points of every table of means, which are exact there. Most pictures need the last one only,
  /// or the last two.
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

  /// Its score is lowered where it hardly differs from the next point's: the lines rise everywhere,
  /// and can be read both ways.
  Point sampled(double quality, const Point& next) const {
    constexpr double leastSlope = 0.25;
    const double mean = settingAt(means_, quality);
    const double most = next.score - leastSlope * (next.mean - mean);
    return {mean, std::min(sampleScore_.at(quality), most)};
  }

  std::span<const QualityPoint> means_;
  const SampleScore& sampleScore_;
  std::array<std::optional<Point>, sampledQualities.size()> points_;
};

/// The quality at which a picture looks as it is aimed at for `quality`.
double movedQuality(const SampleScore& sampleScore, std::span<const QualityPoint> means,
                    double quality, const Aim& aim) {
  const double mean = settingAt(means, quality - aim.reserve);
  if (mean >= ScoreCurve::allAlike) return quality - aim.reserve;
  ScoreCurve curve(means, sampleScore);
  // An aim without points keeps nothing, whatever the excess: no sample is coded to measure it.
  const double excess = aim.points > 0 ? curve.scoreAt(mean) - mean : 0;
  const double kept = aim.keptOf(excess);
  if (!aim.mayBeRaised && excess <= kept) return quality;
  return qualityAt(means, curve.meanAt(mean + kept));
}

/// The finest settings are for those who ask for them: a picture is raised to `best` at most, and
/// lowered the less the nearer `quality` is to 1.
double limited(double moved, double quality, double best) {
  if (moved > quality) return std::min(moved, std::max(quality, best));
  return std::lerp(quality, moved, std::min((1 - quality) / 0.05, 1.0));
}

}  // namespace

double qualityForLook(const ImageDestination& destination, const Image& image,
                      const PictureMeasurements& measurements, double quality) try {
  if (quality >= 1 || image.alpha != AlphaKind::none) return quality;
  const auto sample = sampleOf(image, destination.sampleShape);
  if (!sample) return quality;
  const double moved = movedQuality(
      SampleScore(destination, *sample, measurements), destination.sampleScores(), quality,
      aimFor(measurements.characteristics, destination.sampleShape.bandOf(image)));
  return limited(moved, quality, destination.maximumQuality);
} catch (const UnwritableImage&) {
  return quality;
} catch (const UnreadableImage&) {
  return quality;
}

}  // namespace orvane
