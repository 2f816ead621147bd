#include "platform/imageio/AVIFSettings.h"

#include <cmath>

#include "platform/imageio/QualityTable.h"

namespace orvane {
namespace {

/// Past this many pixels time counts for more than the last percents.
constexpr std::size_t largePicture = 4'000'000;

}  // namespace

AVIFSettings AVIFSettings::forPicture(double quality, std::size_t pixelCount, Tuning tuning) {
  const auto table = tuning == Tuning::imageQuality ? QualityTables::avifQuantizerTunedForImages()
                                                    : QualityTables::avifQuantizer();
  return {.colorQuantizer = static_cast<int>(std::lround(settingAt(table, quality))),
          .speed = pixelCount > largePicture ? 7 : 6};
}

}  // namespace orvane
