#include "codecs/avif/AVIFSettings.h"

#include <algorithm>
#include <cmath>

#include "codecs/QualityTable.h"
#include "codecs/avif/AVIFLibrary.h"

namespace orvane::AVIFSettings {
namespace {

/// Edges among all samples. Screenshots have 0.016 and more, flat drawings 0.002 and less.
constexpr double leastEdges = 0.01;

/// Edges among the samples that are not flat. Screenshots have 0.13 and more, drawings as flat as
/// them up to 0.09.
constexpr double leastEdgesAmongChanges = 0.1;

std::span<const QualityPoint> quantizers(Tuning tuning) {
  return tuning == Tuning::imageQuality ? QualityTables::avifQuantizerTunedForImages()
                                        : QualityTables::avifQuantizer();
}

}  // namespace

Tuning bestTuning() {
  return AVIFLibrary::aomVersion() >= AVIFLibrary::Version{3, 12} ? Tuning::imageQuality
                                                                  : Tuning::structuralSimilarity;
}

Content contentOf(const ImageCharacteristics& characteristics) {
  const bool isFlat = characteristics.contentClass <= ContentClass::screenContent;
  const double least =
      std::max(leastEdges, leastEdgesAmongChanges * (1 - characteristics.flatFraction));
  return isFlat && characteristics.edgeFraction > least ? Content::screen : Content::natural;
}

Tiles tiles(std::uint32_t width, std::uint32_t height) {
  constexpr std::uint64_t mostPixels = 4'000'000;
  Tiles tiles;
  while ((std::uint64_t{width} >> tiles.columnsLog2) * (height >> tiles.rowsLog2) > mostPixels) {
    const bool isWide = (width >> tiles.columnsLog2) > (height >> tiles.rowsLog2);
    ++(isWide ? tiles.columnsLog2 : tiles.rowsLog2);
  }
  return tiles;
}

int colorQuantizer(double quality, Tuning tuning) {
  return static_cast<int>(std::lround(settingAt(quantizers(tuning), quality)));
}

}  // namespace orvane::AVIFSettings
