#include "codecs/avif/AVIFSettings.h"

#include <cmath>

#include "codecs/QualityTable.h"

namespace orvane::AVIFSettings {

int colorQuantizer(double quality, Tuning tuning) {
  const auto table = tuning == Tuning::imageQuality ? QualityTables::avifQuantizerTunedForImages()
                                                    : QualityTables::avifQuantizer();
  return static_cast<int>(std::lround(settingAt(table, quality)));
}

}  // namespace orvane::AVIFSettings
