#include "platform/imageio/AVIFSettings.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orvane {
namespace {

struct Point {
  double quality;
  double quantizer;
};

// Each between 0 and 1 where the mean SSIMULACRA 2 score of photographs is that of the quality, in
// steps that a straight line follows.
using Table = std::array<Point, 9>;
constexpr Table imageQualityTable{{{0, 63},
                                   {0.30, 42},
                                   {0.50, 37.5},
                                   {0.70, 31.5},
                                   {0.80, 27},
                                   {0.85, 23.5},
                                   {0.90, 17.5},
                                   {0.95, 11.5},
                                   {1, 1}}};
constexpr Table structuralSimilarityTable = imageQualityTable;

/// Past this many pixels time counts for more than the last percents.
constexpr std::size_t largePicture = 4'000'000;

double interpolate(const Table& table, double quality) {
  const auto* right = std::ranges::upper_bound(table, quality, {}, &Point::quality);
  if (right == table.begin()) return table.front().quantizer;
  if (right == table.end()) return table.back().quantizer;
  const auto* left = right - 1;
  return std::lerp(left->quantizer, right->quantizer,
                   (quality - left->quality) / (right->quality - left->quality));
}

}  // namespace

AVIFSettings AVIFSettings::forPicture(double quality, std::size_t pixelCount, Tuning tuning) {
  const Table& table =
      tuning == Tuning::imageQuality ? imageQualityTable : structuralSimilarityTable;
  return {.colorQuantizer = static_cast<int>(std::lround(interpolate(table, quality))),
          .speed = pixelCount > largePicture ? 7 : 6};
}

}  // namespace orvane
