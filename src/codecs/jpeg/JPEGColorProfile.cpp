#include "codecs/jpeg/JPEGColorProfile.h"

#include <jerror.h>

#include <algorithm>
#include <array>

#include "codecs/ImageLimits.h"

namespace orvane::JPEGColorProfile {
namespace {

constexpr std::array<std::uint8_t, 12> signature{'I', 'C', 'C', '_', 'P', 'R',
                                                 'O', 'F', 'I', 'L', 'E', 0};
/// The signature, the segment's number from 1 on, and how many there are.
constexpr std::size_t headerSize = signature.size() + 2;
/// A segment's own length field counts itself (ITU-T T.81 B.1.1.4).
constexpr std::size_t maximumPart = 65535 - 2 - headerSize;
constexpr std::size_t maximumCount = 255;

bool isPart(const jpeg_marker_struct& segment) {
  return segment.marker == JPEG_APP0 + 2 && segment.data_length >= headerSize &&
         std::equal(signature.begin(), signature.end(), segment.data);
}

}  // namespace

Bytes assembled(const jpeg_marker_struct* segments) {
  std::array<const jpeg_marker_struct*, maximumCount + 1> parts{};  // by number
  std::size_t count = 0;
  std::size_t found = 0;
  std::size_t size = 0;
  for (const auto* segment = segments; segment != nullptr; segment = segment->next) {
    if (!isPart(*segment)) continue;
    const std::size_t number = segment->data[signature.size()];
    const std::size_t total = segment->data[signature.size() + 1];
    if (found == 0) count = total;
    const bool fits = total == count && number >= 1 && number <= count && parts[number] == nullptr;
    if (!fits) return {};
    parts[number] = segment;
    size += segment->data_length - headerSize;
    ++found;
  }
  if (found != count) return {};
  ImageLimits::checkICC(size);

  Bytes profile;
  profile.reserve(size);
  for (std::size_t number = 1; number <= count; ++number) {
    const jpeg_marker_struct& part = *parts[number];
    profile.insert(profile.end(), part.data + headerSize, part.data + part.data_length);
  }
  return profile;
}

void write(jpeg_compress_struct& info, ByteView profile) {
  const std::size_t count = (profile.size() + maximumPart - 1) / maximumPart;
  if (count > maximumCount) ERREXIT(&info, JERR_BAD_LENGTH);
  for (std::size_t number = 1; number <= count; ++number) {
    const std::size_t begin = (number - 1) * maximumPart;
    const std::size_t size = std::min(profile.size() - begin, maximumPart);
    jpeg_write_m_header(&info, JPEG_APP0 + 2, static_cast<unsigned>(headerSize + size));
    for (const std::uint8_t byte : signature) jpeg_write_m_byte(&info, byte);
    jpeg_write_m_byte(&info, static_cast<int>(number));
    jpeg_write_m_byte(&info, static_cast<int>(count));
    for (const std::uint8_t byte : profile.subspan(begin, size)) jpeg_write_m_byte(&info, byte);
  }
}

}  // namespace orvane::JPEGColorProfile
