#include "codecs/jpeg/ScanScript.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>

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
ScanScript scriptOf(std::size_t components, const Bands& luma, const Bands& chroma) {
  ScanScript script{{.comps_in_scan = 1, .component_index = {0}}};
  if (components > 1) {
    script.push_back({.comps_in_scan = 2, .component_index = {1, 2}});
    append(script, 1, chroma);
    append(script, 2, chroma);
  }
  append(script, 0, luma);
  return script;
}

// Markers of ITU-T T.81, B.1.1.3.
constexpr std::uint8_t markerStart = 0xFF;
constexpr std::uint8_t endOfImage = 0xD9;
constexpr std::uint8_t startOfScan = 0xDA;

/// A file of our own, taken apart.
struct Parts {
  ByteView head;                           ///< to the end of the means' scans
  std::map<std::uint8_t, ByteView> bands;  ///< the other scans, by component
};

/// The end of the marker segment at `at`; for a scan, with its data.
std::size_t endOfSegment(ByteView file, std::size_t at) {
  const std::size_t length = std::size_t{file[at + 2]} * 256 + file[at + 3];
  const std::size_t end = at + 2 + length;
  if (file[at + 1] != startOfScan) return end;
  const auto isMarker = [](std::uint8_t a, std::uint8_t b) { return a == markerStart && b != 0; };
  const auto data = file.subspan(end);
  return end + static_cast<std::size_t>(std::ranges::adjacent_find(data, isMarker) - data.begin());
}

Parts takeApart(ByteView file) {
  Parts parts;
  std::size_t scan = 0;  // where the scan and its tables begin
  std::size_t end = 0;
  for (std::size_t at = 2; file[at + 1] != endOfImage; at = end) {
    end = endOfSegment(file, at);
    if (file[at + 1] != startOfScan) continue;
    const std::size_t components = file[at + 4];
    const bool holdsMeans = file[at + 5 + 2 * components] == 0;
    if (holdsMeans) {
      parts.head = file.first(end);
    } else {
      // A component's scans lie side by side.
      ByteView& bands = parts.bands[file[at + 5]];
      const std::size_t size = bands.size() + (end - scan);
      bands = file.subspan(end - size, size);
    }
    scan = end;
  }
  return parts;
}

}  // namespace

std::vector<ScanScript> scanScripts(std::size_t components) {
  return {scriptOf(components, bitByBit, lowFirst), scriptOf(components, lowFirst, allAtOnce),
          scriptOf(components, lowAndMiddleFirst, allAtOnce)};
}

Bytes joinSmallestScans(std::span<const Bytes> files) {
  Parts smallest = takeApart(files.front());
  for (const Bytes& file : files.subspan(1)) {
    for (const auto& [component, bands] : takeApart(file).bands) {
      ByteView& best = smallest.bands[component];
      if (bands.size() < best.size()) best = bands;
    }
  }
  constexpr std::array end{markerStart, endOfImage};
  std::size_t size = smallest.head.size() + end.size();
  for (const auto& [component, bands] : smallest.bands) size += bands.size();
  Bytes joined;
  joined.reserve(size);
  joined.assign(smallest.head.begin(), smallest.head.end());
  for (const auto& [component, bands] : smallest.bands) {
    joined.insert(joined.end(), bands.begin(), bands.end());
  }
  joined.insert(joined.end(), end.begin(), end.end());
  return joined;
}

}  // namespace orvane
