#include "codecs/QualityTable.h"

#include <algorithm>
#include <cmath>

namespace orvane {
namespace {

// The settings are fitted to these mean SSIMULACRA 2 scores of photographs at the quality that is
// asked. Two photographs of three are detailed, and coded with the setting of 0.04 less.
//   0.30  0.40  0.50  0.60  0.70  0.75  0.80  0.85  0.90  0.95  0.98
//     45    52    58    64    70    73  76.5  80.4  84.7  89.3  92.3

constexpr QualityPoint jpegStepScaleTable[]{
    {0.00, 27},    {0.30, 17.2}, {0.40, 13.4},  {0.50, 10.874}, {0.60, 8.434},
    {0.70, 5.998}, {0.75, 5.04}, {0.80, 3.579}, {0.85, 2.762},  {0.90, 1.318},
    {0.95, 0.496}, {0.98, 0.15}, {1.00, 0.03},
};

constexpr QualityPoint avifQuantizerTable[]{
    {0.00, 50.5}, {0.30, 39.95}, {0.40, 37.75}, {0.50, 35.25}, {0.60, 31.95},
    {0.70, 28.5}, {0.75, 26.35}, {0.80, 23.3},  {0.85, 18.3},  {0.90, 12},
    {0.95, 6.4},  {0.98, 2.9},   {1.00, 1},
};

constexpr QualityPoint avifQuantizerTunedForImagesTable[]{
    {0.00, 55},   {0.30, 44.5}, {0.40, 41.5}, {0.50, 39.35}, {0.60, 35.6},
    {0.70, 32.1}, {0.75, 29.3}, {0.80, 26.6}, {0.85, 19.7},  {0.90, 13.3},
    {0.95, 7},    {0.98, 3.8},  {1.00, 1},
};

// Above 0.95, 4:2:0 chroma limits the score, and finer steps cost more than they gain.
constexpr QualityPoint heicRateFactorTable[]{
    {0.00, 41},   {0.30, 35.6},  {0.40, 34.2}, {0.50, 33.05}, {0.60, 31.3}, {0.70, 29.46},
    {0.75, 28.2}, {0.80, 26.25}, {0.85, 23.9}, {0.90, 20.7},  {0.95, 14.4}, {1.00, 11.5},
};

constexpr QualityPoint jpegSampleScoreTable[]{
    {0.00, 35.3}, {0.10, 40.2}, {0.20, 45.1}, {0.30, 50.8}, {0.40, 57.3},
    {0.50, 62.3}, {0.60, 67.8}, {0.70, 73.3}, {0.75, 76.1}, {0.80, 80.4},
    {0.85, 82.9}, {0.90, 88.6}, {0.95, 93.7}, {0.98, 95.6}, {1.00, 95.8},
};

constexpr QualityPoint avifSampleScoreTable[]{
    {0.00, 11.2}, {0.10, 25.9}, {0.20, 39.3}, {0.30, 48.3}, {0.40, 53.6},
    {0.50, 60.6}, {0.60, 66.6}, {0.70, 71.7}, {0.75, 75.7}, {0.80, 79.3},
    {0.85, 83.1}, {0.90, 88.1}, {0.95, 93.6}, {0.98, 95.8}, {1.00, 97.8},
};

constexpr QualityPoint avifSampleScoreTunedForImagesTable[]{
    {0.00, 17.2}, {0.10, 27},   {0.20, 39.3}, {0.30, 47.2}, {0.40, 54.1},
    {0.50, 61.3}, {0.60, 66.2}, {0.70, 72.7}, {0.75, 76.9}, {0.80, 78.5},
    {0.85, 83.7}, {0.90, 88.8}, {0.95, 93.5}, {0.98, 95.6}, {1.00, 97.2},
};

constexpr QualityPoint heicSampleScoreTable[]{
    {0.00, 23.8}, {0.10, 34.1}, {0.20, 43.9}, {0.30, 52.4}, {0.40, 58.3},
    {0.50, 62.8}, {0.60, 68.7}, {0.70, 73.9}, {0.75, 76.9}, {0.80, 80.7},
    {0.85, 84.5}, {0.90, 88.3}, {0.95, 92.6}, {0.98, 93.3}, {1.00, 93.6},
};

/// The number `to` of a table where its number `from`, which rises or falls all the way, is
/// `value`: on the line between the two nearest points. The first or last point's where `value`
/// lies outside; the first one's for NaN.
double interpolate(std::span<const QualityPoint> table, double value, double QualityPoint::*from,
                   double QualityPoint::*to) {
  const auto above = table.front().*from < table.back().*from
                         ? std::ranges::upper_bound(table, value, std::ranges::less{}, from)
                         : std::ranges::upper_bound(table, value, std::ranges::greater{}, from);
  if (above == table.begin() || std::isnan(value)) return table.front().*to;
  if (above == table.end()) return table.back().*to;
  const QualityPoint& below = *(above - 1);
  return std::lerp(below.*to, (*above).*to, (value - below.*from) / ((*above).*from - below.*from));
}

}  // namespace

namespace QualityTables {

std::span<const QualityPoint> jpegStepScale() { return jpegStepScaleTable; }
std::span<const QualityPoint> avifQuantizer() { return avifQuantizerTable; }
std::span<const QualityPoint> avifQuantizerTunedForImages() {
  return avifQuantizerTunedForImagesTable;
}
std::span<const QualityPoint> heicRateFactor() { return heicRateFactorTable; }
std::span<const QualityPoint> jpegSampleScore() { return jpegSampleScoreTable; }
std::span<const QualityPoint> avifSampleScore() { return avifSampleScoreTable; }
std::span<const QualityPoint> avifSampleScoreTunedForImages() {
  return avifSampleScoreTunedForImagesTable;
}
std::span<const QualityPoint> heicSampleScore() { return heicSampleScoreTable; }

}  // namespace QualityTables

double settingAt(std::span<const QualityPoint> table, double quality) {
  return interpolate(table, quality, &QualityPoint::quality, &QualityPoint::setting);
}

double qualityAt(std::span<const QualityPoint> table, double setting) {
  return interpolate(table, setting, &QualityPoint::setting, &QualityPoint::quality);
}

}  // namespace orvane
