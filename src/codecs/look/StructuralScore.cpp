#include "codecs/look/StructuralScore.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <utility>

#include "codecs/look/OpponentPlanes.h"
#include "codecs/look/WindowedMoments.h"

namespace orvane {
namespace {

// MARK: Maps

/// The norms of an error map over all its samples.
class Norms {
  static constexpr std::size_t lanes = 8;  ///< samples that processors add at once

 public:
  void add(const std::vector<float>& errors) {
    std::array<float, lanes> sums{};
    std::array<float, lanes> fourthPowers{};
    const std::size_t whole = errors.size() / lanes * lanes;
    const auto addSample = [&](std::size_t lane, float error) {
      const float square = error * error;
      sums[lane] += error;
      fourthPowers[lane] += square * square;
    };
    for (std::size_t x = 0; x < whole; x += lanes) {
      for (std::size_t lane = 0; lane < lanes; ++lane) addSample(lane, errors[x + lane]);
    }
    for (std::size_t x = whole; x < errors.size(); ++x) addSample(x - whole, errors[x]);
    sum_ = std::accumulate(sums.begin(), sums.end(), sum_);
    fourthPowers_ = std::accumulate(fourthPowers.begin(), fourthPowers.end(), fourthPowers_);
    count_ += static_cast<double>(errors.size());
  }

  double mean() const { return sum_ / count_; }
  double fourth() const { return std::sqrt(std::sqrt(fourthPowers_ / count_)); }

 private:
  double sum_ = 0;
  double fourthPowers_ = 0;
  double count_ = 0;
};

/// The error maps of one channel at one scale.
struct Maps {
  Norms structure;  ///< of 1 less the structural similarity
  Norms artifact;   ///< of edges where the source is smooth
  Norms detail;     ///< of edges that the coded picture has lost
};

/// One row of the three maps.
class MapRow {
 public:
  explicit MapRow(std::size_t width) : structure_(width), artifact_(width), detail_(width) {}

  void measure(const float* source, const float* coded, const WindowedMoments& moments) {
    // Compilers vectorize loops over few arrays only.
    measureStructure(moments);
    measureEdges(source, coded, moments);
  }

  void addTo(Maps& maps) const {
    maps.structure.add(structure_);
    maps.artifact.add(artifact_);
    maps.detail.add(detail_);
  }

 private:
  void measureStructure(const WindowedMoments& moments);
  void measureEdges(const float* source, const float* coded, const WindowedMoments& moments);

  std::vector<float> structure_;
  std::vector<float> artifact_;
  std::vector<float> detail_;
};

void MapRow::measureStructure(const WindowedMoments& moments) {
  constexpr float stabilizer = 0.0009F;
  const float* const sourceMeans = moments.sourceMeans();
  const float* const codedMeans = moments.codedMeans();
  const float* const sourceSquares = moments.sourceSquares();
  const float* const codedSquares = moments.codedSquares();
  const float* const products = moments.products();
  float* const structure = structure_.data();
  const std::size_t width = structure_.size();
  for (std::size_t x = 0; x < width; ++x) {
    const float a = sourceMeans[x];
    const float b = codedMeans[x];
    const float variances = (sourceSquares[x] - a * a) + (codedSquares[x] - b * b);
    const float similarity = (1 - (a - b) * (a - b)) * (2 * (products[x] - a * b) + stabilizer) /
                             (variances + stabilizer);
    structure[x] = std::max(1 - similarity, 0.0F);
  }
}

void MapRow::measureEdges(const float* source, const float* coded, const WindowedMoments& moments) {
  const float* const sourceMeans = moments.sourceMeans();
  const float* const codedMeans = moments.codedMeans();
  float* const artifact = artifact_.data();
  float* const detail = detail_.data();
  const std::size_t width = artifact_.size();
  for (std::size_t x = 0; x < width; ++x) {
    const float change =
        (1 + std::abs(coded[x] - codedMeans[x])) / (1 + std::abs(source[x] - sourceMeans[x])) - 1;
    artifact[x] = std::max(change, 0.0F);
    detail[x] = std::max(-change, 0.0F);
  }
}

Maps compare(const Plane<float>& source, const Plane<float>& coded) {
  WindowedMoments moments(source, coded);
  MapRow row(source.width);
  Maps maps;
  for (std::size_t y = 0; y < source.height; ++y) {
    moments.measure(y);
    row.measure(source.row(y), coded.row(y), moments);
    row.addTo(maps);
  }
  return maps;
}

// MARK: Score

struct Term {
  std::size_t scale;
  OpponentChannel channel;
  double (Norms::*norm)() const;
  Norms Maps::*map;
  double weight;
};

using enum OpponentChannel;

constexpr auto meanNorm = &Norms::mean;
constexpr auto fourthNorm = &Norms::fourth;
constexpr auto structureMap = &Maps::structure;
constexpr auto artifactMap = &Maps::artifact;
constexpr auto detailMap = &Maps::detail;

constexpr Term terms[]{
    {0, luma, fourthNorm, structureMap, 7.466890328078848},
    {0, luma, fourthNorm, detailMap, 17.445833984131262},
    {1, redGreen, fourthNorm, structureMap, 1.1041726426657346},
    {1, luma, fourthNorm, structureMap, 6.683678146179332},
    {1, luma, fourthNorm, detailMap, 1.027889937768264},
    {2, redGreen, fourthNorm, structureMap, 1.8422455520539298},
    {2, redGreen, fourthNorm, artifactMap, 11.441172603757666},
    {2, luma, meanNorm, structureMap, 225.20515300849274},
    {2, luma, fourthNorm, structureMap, 19.213238186143016},
    {3, redGreen, fourthNorm, structureMap, 1.8787594979546387},
    {3, redGreen, fourthNorm, artifactMap, 10.94906990605142},
    {3, luma, meanNorm, structureMap, 176.39317598450694},
    {3, luma, fourthNorm, structureMap, 24.43300999870476},
    {3, luma, fourthNorm, artifactMap, 0.28520802612117757},
    {3, blueYellow, fourthNorm, structureMap, 8.826982764996862},
    {3, blueYellow, fourthNorm, artifactMap, 23.19243343998926},
    {4, redGreen, meanNorm, artifactMap, 0.9677937080626833},
    {4, redGreen, fourthNorm, artifactMap, 0.9981766977854967},
    {4, luma, fourthNorm, structureMap, 34.77906344483772},
    {4, luma, fourthNorm, artifactMap, 44.835625328877896},
    {4, blueYellow, meanNorm, structureMap, 95.1080498811086},
    {4, blueYellow, meanNorm, artifactMap, 0.9863978034400682},
    {4, blueYellow, meanNorm, detailMap, 0.9834382792465353},
    {4, blueYellow, fourthNorm, artifactMap, 171.2667255897307},
    {4, blueYellow, fourthNorm, detailMap, 0.9807858872435379},
};

constexpr std::size_t scales = 5;

bool isNeeded(std::size_t scale, OpponentChannel channel) {
  return std::ranges::any_of(
      terms, [&](const Term& term) { return term.scale == scale && term.channel == channel; });
}

/// Calls `use` with each channel that the score needs, at each scale.
template <class Use>
void forEachChannel(const Image& image, const Use& use) {
  LinearPlanes linear = linearPlanes(image);
  for (std::size_t scale = 0; scale < scales; ++scale) {
    if (std::min(linear[0].width, linear[0].height) < 8) break;
    if (scale > 0) linear = halved(linear);
    for (const OpponentChannel channel : {redGreen, luma, blueYellow}) {
      if (isNeeded(scale, channel)) use(scale, channel, opponentPlane(linear, channel));
    }
  }
}

double scoreOf(double error) {
  const double scaled = error * 0.9562382616834844;
  const double shaped = 2.326765642916932 * scaled - 0.020884521182843837 * scaled * scaled +
                        6.248496625763138e-05 * scaled * scaled * scaled;
  return shaped > 0 ? 100 - 10 * std::pow(shaped, 0.6276336467831387) : 100;
}

}  // namespace

StructuralScore::StructuralScore(const Image& source) {
  forEachChannel(source, [&](std::size_t, OpponentChannel, Plane<float> plane) {
    source_.push_back(std::move(plane));
  });
}

double StructuralScore::of(const Image& coded) const {
  double error = 0;
  auto source = source_.begin();
  forEachChannel(coded, [&](std::size_t scale, OpponentChannel channel, const Plane<float>& plane) {
    const Maps maps = compare(*source++, plane);
    for (const Term& term : terms) {
      if (term.scale == scale && term.channel == channel) {
        error += term.weight * ((maps.*term.map).*term.norm)();
      }
    }
  });
  return scoreOf(error);
}

}  // namespace orvane
