#include "codecs/look/Look.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <span>

#include "codecs/ImageSource.h"
#include "codecs/QualityTable.h"
#include "codecs/look/PictureSample.h"
#include "codecs/look/StructuralScore.h"
#include "platform/graphics/RowRenderer.h"

namespace orvane {
namespace {

/// The qualities that samples are coded with. They are fixed, so that every quality is read off the
/// same scores, and the result rises with the quality that is asked.
constexpr std::array sampledQualities{0.0, 0.15, 0.3, 0.5, 0.7, 0.8, 0.85, 0.9, 1.0};

/// How far a picture may look better than photographs do on the mean.
struct Margin {
  double points;        ///< of the score
  double partOfExcess;  ///< 0…1

  bool keepsWorse;  ///< leaves pictures alone that look worse

  /// What may stay of an excess over the mean.
  double keptOf(double excess) const {
    return std::clamp(excess, 0.0, points + partOfExcess * std::max(excess, 0.0));
  }
};

/// Samples of pictures without grain score too high: the seams between their bands hide losses, the
/// more the narrower the bands are. Those of screens and drawings do so the more, the better they
/// look: some fell below the mean when less than half of their excess was kept.
Margin marginFor(const ImageCharacteristics& characteristics, std::size_t band) {
  constexpr double grain = 4;                // noise from which on seams are nothing special
  constexpr double seamsWithoutGrain = 240;  // points for bands of one pixel
  constexpr double graphicsPoints = 3;       // kept in any case
  constexpr double graphicsPartWithoutGrain = 0.5;
  const double smoothness = std::max(1 - characteristics.noiseLevel / grain, 0.0);
  const double seams = smoothness * seamsWithoutGrain / static_cast<double>(band);
  if (isPhotograph(characteristics.contentClass)) return {seams, 0, false};
  return {std::max(seams, graphicsPoints), smoothness * graphicsPartWithoutGrain, true};
}

/// How one picture's score rises with the mean score of photographs: lines between its samples. A
/// sample is coded when its score is needed.
class ScoreCurve {
 public:
  ScoreCurve(const ImageDestination& destination, const Image& sample,
             const PictureMeasurements& measurements)
      : destination_(destination),
        sample_(sample),
        measurements_(measurements),
        reference_(sample) {
    std::ranges::transform(sampledQualities, means_.begin(), [&](double quality) {
      return settingAt(destination.sampleScores(), destination.codedQuality(quality));
    });
  }

  double scoreAt(double mean) {
    const std::size_t number = segmentAt(mean);
    const double part = (mean - means_[number]) / (means_[number + 1] - means_[number]);
    return std::lerp(score(number), score(number + 1), std::clamp(part, 0.0, 1.0));
  }

  /// The mean at which the score is `wanted`, searched from the mean `start` on. The first or last
  /// sample's where none reaches it.
  double meanAt(double wanted, double start) {
    constexpr std::size_t last = sampledQualities.size() - 1;
    std::size_t number = segmentAt(start);
    while (number > 0 && score(number) >= wanted) --number;
    if (score(number) >= wanted) return means_.front();
    while (number < last && score(number + 1) < wanted) ++number;
    if (number == last) return means_.back();
    const double part = (wanted - score(number)) / (score(number + 1) - score(number));
    return std::lerp(means_[number], means_[number + 1], part);
  }

 private:
  /// The number of the first of the two samples between which `mean` lies.
  std::size_t segmentAt(double mean) const {
    const auto end = std::lower_bound(means_.begin() + 1, means_.end() - 1, mean);
    return static_cast<std::size_t>(end - means_.begin()) - 1;
  }

  double score(std::size_t number) {
    if (!scores_[number]) scores_[number] = coded(sampledQualities[number]);
    return *scores_[number];
  }

  /// Encodes, decodes and scores.
  double coded(double quality) const {
    const Bytes file = destination_.encodeSample(sample_, measurements_, quality);
    const Image image = ImageSource::create(file)->image();
    // The numbers as they are: the file may describe the space of the sample by another profile.
    return reference_.of(rendered(image, renderingSpace(image.colorSpace), 8));
  }

  const ImageDestination& destination_;
  const Image& sample_;
  const PictureMeasurements& measurements_;
  StructuralScore reference_;
  std::array<double, sampledQualities.size()> means_{};
  std::array<std::optional<double>, sampledQualities.size()> scores_;
};

/// The quality at which the score is the mean one at `quality`, or above it by the margin.
double movedQuality(ScoreCurve& curve, std::span<const QualityPoint> means, double quality,
                    const Margin& margin) {
  const double mean = settingAt(means, quality);
  // Without a margin nothing depends on the score at the mean, and no sample is coded for it.
  const double excess = margin.points > 0 ? curve.scoreAt(mean) - mean : 0;
  if (excess < 0 && margin.keepsWorse) return quality;
  return qualityAt(means, curve.meanAt(mean + margin.keptOf(excess), mean));
}

/// The finest settings are for those who ask for them: a picture is raised at most half the way to
/// the best, and lowered the less the nearer `quality` is to 1. Rises with `moved` and `quality`.
double limited(double moved, double quality, double best) {
  if (moved > quality) return std::min(moved, std::lerp(quality, std::max(quality, best), 0.5));
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
  return limited(moved, quality, destination.maximumQuality);
} catch (const UnwritableImage&) {
  return quality;
} catch (const UnreadableImage&) {
  return quality;
}

}  // namespace orvane
