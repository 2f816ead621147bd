#include "platform/imageio/QualityTable.h"

#include <algorithm>
#include <cmath>

namespace orvane {
namespace {

// At each quality between 0 and 1 the mean SSIMULACRA 2 score of photographs is
//   0.30  0.40  0.50  0.60  0.70  0.75  0.80  0.85  0.90  0.95  0.98
//     45    52    58    64    70    73  76.5  80.4  84.7  89.3  92.3

constexpr QualityPoint jpegStepScaleTable[]{
    {0.00, 45},   {0.30, 18.5}, {0.40, 14},   {0.50, 10.6}, {0.60, 6.9},
    {0.70, 5},    {0.75, 4.15}, {0.80, 2.85}, {0.85, 1.91}, {0.90, 1.17},
    {0.95, 0.39}, {0.98, 0.22}, {1.00, 0.12},
};

constexpr QualityPoint avifQuantizerTable[]{
    {0.00, 51},   {0.30, 40.2}, {0.40, 37.7}, {0.50, 35.3}, {0.60, 32.5},
    {0.70, 29.3}, {0.75, 27.2}, {0.80, 24.8}, {0.85, 20.5}, {0.90, 15.3},
    {0.95, 10.2}, {0.98, 6.9},  {1.00, 1},
};

constexpr QualityPoint avifQuantizerTunedForImagesTable[]{
    {0.00, 55},   {0.30, 43.4}, {0.40, 40.4}, {0.50, 38.1}, {0.60, 35.4}, {0.70, 32}, {0.75, 29.8},
    {0.80, 27.3}, {0.85, 22.8}, {0.90, 16.8}, {0.95, 11.1}, {0.98, 7.5},  {1.00, 1},
};

// Above 0.95, where 4:2:0 chroma keeps scores from rising much, finer steps cost more than they
// give.
constexpr QualityPoint heicRateFactorTable[]{
    {0.00, 41}, {0.30, 36.2}, {0.40, 34.7}, {0.50, 33.3}, {0.60, 31.8}, {0.70, 30},
    {0.75, 29}, {0.80, 27.5}, {0.85, 25.6}, {0.90, 22.8}, {0.95, 18},   {1.00, 15.5},
};

}  // namespace

namespace QualityTables {

std::span<const QualityPoint> jpegStepScale() { return jpegStepScaleTable; }
std::span<const QualityPoint> avifQuantizer() { return avifQuantizerTable; }
std::span<const QualityPoint> avifQuantizerTunedForImages() {
  return avifQuantizerTunedForImagesTable;
}
std::span<const QualityPoint> heicRateFactor() { return heicRateFactorTable; }

}  // namespace QualityTables

double settingAt(std::span<const QualityPoint> table, double quality) {
  const auto above = std::ranges::upper_bound(table, quality, {}, &QualityPoint::quality);
  if (above == table.begin() || std::isnan(quality)) return table.front().setting;
  if (above == table.end()) return table.back().setting;
  const QualityPoint& below = *(above - 1);
  return std::lerp(below.setting, above->setting,
                   (quality - below.quality) / (above->quality - below.quality));
}

}  // namespace orvane
