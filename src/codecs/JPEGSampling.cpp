#include "codecs/JPEGSampling.h"

#include <algorithm>
#include <array>

namespace orvane {
namespace {

constexpr std::uint8_t applicationData14 = 0xEE;

/// ITU-T T.81 table B.1.
bool isStartOfFrame(std::uint8_t marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

/// APP14's transform flag (ITU-T T.872 6.5.3), for three components. `segment` is from its length
/// on.
bool saysRGB(ByteView segment) {
  constexpr std::array<std::uint8_t, 5> adobe{'A', 'd', 'o', 'b', 'e'};
  return segment.size() >= 14 && std::ranges::equal(segment.subspan(2, 5), adobe) &&
         segment[13] == 0;
}

/// A frame header (ITU-T T.81 B.2.2) from its length on.
bool isSubsampledRGB(ByteView segment, bool isMarkedRGB) {
  if (segment.size() < 17 || segment[7] != 3) return false;
  const bool isNamedRGB = segment[8] == 'R' && segment[11] == 'G' && segment[14] == 'B';
  const bool isFullSize = segment[9] == segment[12] && segment[9] == segment[15];
  return (isMarkedRGB || isNamedRGB) && !isFullSize;
}

}  // namespace

bool isSubsampledRGB(ByteView jpeg) {
  bool isMarkedRGB = false;
  for (std::size_t at = 2; at + 4 <= jpeg.size() && jpeg[at] == 0xFF;) {
    const std::uint8_t marker = jpeg[at + 1];
    const std::size_t length = std::size_t{jpeg[at + 2]} << 8 | jpeg[at + 3];
    const ByteView segment = jpeg.subspan(at + 2).first(std::min(length, jpeg.size() - at - 2));
    if (isStartOfFrame(marker)) return isSubsampledRGB(segment, isMarkedRGB);
    if (marker == applicationData14) isMarkedRGB = saysRGB(segment);
    at += marker == 0xFF ? 1 : 2 + length;  // any number of 0xFF may come before a marker
  }
  return false;
}

}  // namespace orvane
