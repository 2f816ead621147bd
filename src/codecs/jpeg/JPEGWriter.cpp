#include <algorithm>
#include <span>
#include <utility>
#include <vector>

#include "codecs/ImageDestination.h"
#include "codecs/OpaqueRows.h"
#include "codecs/jpeg/CoefficientCoder.h"
#include "codecs/jpeg/ComponentFile.h"
#include "codecs/jpeg/ComponentScans.h"
#include "codecs/jpeg/JPEGSettings.h"
#include "codecs/jpeg/ScanScript.h"

namespace orvane {
namespace {

/// Of all the scripts, each component's smallest scans.
ComponentScans smallestScans(const ComponentFile& file, std::span<const ScanScript> scripts) {
  ComponentScans smallest(file.write(scripts.front()));
  for (const ScanScript& script : scripts.subspan(1)) {
    smallest.improveWith(file.write(script));
  }
  return smallest;
}

ComponentScans lumaScans(const CoefficientPlane& plane, const JPEGSettings& settings,
                         const ColorSpacePtr& space, const ScanScripts& scripts) {
  return smallestScans({.planes = {&plane, 1},
                        .steps = settings.lumaSteps,
                        .sampling = static_cast<int>(unitSide(settings.chroma) / 8),
                        .profile = space->isSRGB() ? ByteView() : ByteView(space->iccData())},
                       scripts.luma);
}

ComponentScans chromaScans(const CoefficientCoder::ChromaPlanes& planes,
                           const JPEGSettings& settings, const ScanScripts& scripts) {
  return smallestScans(
      {.planes = planes, .steps = settings.chromaSteps, .sampling = 1, .profile = {}},
      scripts.chroma);
}

void checkSize(const Image& image) {
  if (image.width == 0 || image.height == 0) throw UnwritableImage("a side has no pixels");
  if (std::max(image.width, image.height) > JPEG_MAX_DIMENSION) {
    throw UnwritableImage("a side is too long");
  }
}

Bytes encode(const Image& image, const PictureMeasurements& measurements, double quality,
             const ScanScripts& scripts) {
  checkSize(image);
  OpaqueRows rows(image);
  // A profile for RGB says nothing about one component.
  const bool gray = measurements.isGray && rows.colorSpace()->isSRGB();
  auto settings = JPEGSettings::forPicture(quality, measurements.chromaEdgeShare);
  if (gray) settings.chroma = JPEGSettings::Chroma::full;  // A unit of one component is a block.
  CoefficientCoder coder(rows, settings);
  std::vector<ComponentScans> groups;
  if (!gray) {
    auto chroma = coder.codeChroma();
    groups.push_back(chromaScans(chroma, settings, scripts));
    coder.decodeChroma(std::move(chroma));
  }
  groups.insert(groups.begin(), lumaScans(coder.codeLuma(), settings, rows.colorSpace(), scripts));
  return join(groups);
}

Bytes encodeSmallest(const Image& image, const PictureMeasurements& measurements, double quality,
                     int) {
  return encode(image, measurements, quality, ScanScripts::toTry());
}

Bytes encodeSample(const Image& image, const PictureMeasurements& measurements, double quality) {
  return encode(image, measurements, quality, ScanScripts::quickest());
}

}  // namespace

const ImageDestination jpegDestination{
    .alpha = ImageDestination::Alpha::none,
    .maximumQuality = 1,
    .encode = encodeSmallest,
    .encodeSample = encodeSample,
    .sampleShape = {.bandOfSmall = 64, .bandOfLarge = 64, .mostPixels = 250'000},
    .sampleScores = QualityTables::jpegSampleScore};

}  // namespace orvane
