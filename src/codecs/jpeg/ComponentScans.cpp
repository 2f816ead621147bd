#include "codecs/jpeg/ComponentScans.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace orvane {
namespace {

// Markers of ITU-T T.81, B.1.1.3.
constexpr std::uint8_t markerStart = 0xFF;
constexpr std::uint8_t startOfImage = 0xD8;
constexpr std::uint8_t startOfProgressiveFrame = 0xC2;
constexpr std::uint8_t startOfScan = 0xDA;
constexpr std::uint8_t endOfImage = 0xD9;

/// The end of the marker segment at `at`; for a scan, with its data.
std::size_t endOfSegment(ByteView file, std::size_t at) {
  const std::size_t length = std::size_t{file[at + 2]} * 256 + file[at + 3];
  const std::size_t end = at + 2 + length;
  if (file[at + 1] != startOfScan) return end;
  const auto isMarker = [](std::uint8_t a, std::uint8_t b) { return a == markerStart && b != 0; };
  const auto data = file.subspan(end);
  return end + static_cast<std::size_t>(std::ranges::adjacent_find(data, isMarker) - data.begin());
}

void append(Bytes& bytes, ByteView more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

/// Where the parts of a file lie.
struct Parts {
  ByteView head;
  ByteView frameHeader;
  ByteView means;
  std::map<std::uint8_t, ByteView> bands;
};

/// Adds a scan, which begins with its tables and whose header is at `header`.
void addScan(ByteView scan, const std::uint8_t* header, Parts& parts) {
  const std::size_t components = header[4];
  const bool holdsMeans = header[5 + 2 * components] == 0;
  if (holdsMeans) {
    parts.means = scan;
  } else {
    // A component's scans lie side by side.
    ByteView& bands = parts.bands[header[5]];
    bands = ByteView(scan.data() - bands.size(), bands.size() + scan.size());
  }
}

Parts takeApart(ByteView file) {
  Parts parts;
  std::size_t begin = 2;  // of the part that ends with the next frame or scan
  std::size_t end = 0;
  for (std::size_t at = begin; file[at + 1] != endOfImage; at = end) {
    end = endOfSegment(file, at);
    if (file[at + 1] == startOfProgressiveFrame) {
      parts.head = file.subspan(begin, at - begin);
      parts.frameHeader = file.subspan(at, end - at);
      begin = end;
    } else if (file[at + 1] == startOfScan) {
      addScan(file.subspan(begin, end - begin), file.data() + at, parts);
      begin = end;
    }
  }
  return parts;
}

Bytes copy(ByteView bytes) { return {bytes.begin(), bytes.end()}; }

/// The frame header of all groups' components: the first group's, with the others' parameters.
Bytes joinFrameHeaders(std::span<const ComponentScans> groups) {
  constexpr std::size_t lengthAt = 3;
  constexpr std::size_t countAt = 9;
  Bytes joined = groups.front().frameHeader;
  for (const ComponentScans& group : groups.subspan(1)) {
    const ByteView parameters = ByteView(group.frameHeader).subspan(countAt + 1);
    append(joined, parameters);
    joined[lengthAt] = static_cast<std::uint8_t>(joined[lengthAt] + parameters.size());
    joined[countAt] = static_cast<std::uint8_t>(joined[countAt] + group.frameHeader[countAt]);
  }
  return joined;
}

std::size_t sizeOf(std::span<const ComponentScans> groups) {
  std::size_t size = 4;  // the first and the last marker
  for (const ComponentScans& group : groups) {
    size += group.head.size() + group.frameHeader.size() + group.means.size();
    for (const auto& [component, bands] : group.bands) size += bands.size();
  }
  return size;
}

}  // namespace

ComponentScans::ComponentScans(ByteView file) {
  const Parts parts = takeApart(file);
  head = copy(parts.head);
  frameHeader = copy(parts.frameHeader);
  means = copy(parts.means);
  for (const auto& [component, scans] : parts.bands) bands[component] = copy(scans);
}

void ComponentScans::improveWith(ByteView file) {
  for (const auto& [component, scans] : takeApart(file).bands) {
    Bytes& best = bands[component];
    if (scans.size() < best.size()) best = copy(scans);
  }
}

Bytes join(std::span<const ComponentScans> groups) {
  Bytes file{markerStart, startOfImage};
  file.reserve(sizeOf(groups));
  for (const ComponentScans& group : groups) append(file, group.head);
  append(file, joinFrameHeaders(groups));
  for (const ComponentScans& group : groups) append(file, group.means);
  for (const ComponentScans& group : groups) {
    for (const auto& [component, bands] : group.bands) append(file, bands);
  }
  append(file, std::array{markerStart, endOfImage});
  return file;
}

}  // namespace orvane
