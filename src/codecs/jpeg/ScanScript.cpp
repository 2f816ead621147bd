#include "codecs/jpeg/ScanScript.h"

namespace orvane {
namespace {

/// Coefficients of one component, in zigzag order, that make one scan.
struct Band {
  int first;
  int last;
  int bitsBefore = 0;  ///< bits that earlier scans have left, or 0 for a first scan
  int bitsLeft = 0;    ///< low bits that a later scan adds
};

using Bands = std::vector<Band>;

/// Splitting off the lowest frequencies pays where most blocks have few others. Leaving the lowest
/// bit to a scan of its own pays where many levels are 1: most are noise or edges.
const Bands bitByBit{{1, 8, 0, 1}, {9, 63, 0, 1}, {1, 63, 1, 0}};
const Bands lowFirst{{1, 2}, {3, 63}};
const Bands lowAndMiddleFirst{{1, 2}, {3, 8}, {9, 63}};
const Bands allAtOnce{{1, 63}};

void append(ScanScript& script, int component, const Bands& bands) {
  for (const Band& band : bands) {
    script.push_back({.comps_in_scan = 1,
                      .component_index = {component},
                      .Ss = band.first,
                      .Se = band.last,
                      .Ah = band.bitsBefore,
                      .Al = band.bitsLeft});
  }
}

/// The means are not split by bits: a refinement costs a whole bit for each block.
ScanScript scriptOf(int components, const Bands& bands) {
  ScanScript script{{.comps_in_scan = components, .component_index = {0, 1}}};
  for (int component = 0; component < components; ++component) append(script, component, bands);
  return script;
}

}  // namespace

ScanScripts ScanScripts::toTry() {
  return {.luma = {scriptOf(1, bitByBit), scriptOf(1, lowFirst), scriptOf(1, lowAndMiddleFirst)},
          .chroma = {scriptOf(2, lowFirst), scriptOf(2, allAtOnce)}};
}

ScanScripts ScanScripts::quickest() {
  return {.luma = {scriptOf(1, allAtOnce)}, .chroma = {scriptOf(2, allAtOnce)}};
}

}  // namespace orvane
