#include "platform/imageio/HEVCStream.h"

#include <algorithm>

namespace orvane::HEVCStream {
namespace {

constexpr std::size_t unitHeaderSize = 2;

/// The payload without the emulation prevention bytes: every 3 after two zeros (7.3.1.1).
Bytes unescaped(ByteView unit) {
  Bytes payload;
  payload.reserve(unit.size());
  int zeros = 0;
  for (const std::uint8_t byte : unit) {
    if (zeros == 2 && byte == 3) {
      zeros = 0;
      continue;
    }
    zeros = byte == 0 ? std::min(zeros + 1, 2) : 0;
    payload.push_back(byte);
  }
  return payload;
}

Bytes escaped(ByteView payload) {
  Bytes unit;
  unit.reserve(payload.size() + payload.size() / 64);
  int zeros = 0;
  for (const std::uint8_t byte : payload) {
    if (zeros == 2 && byte <= 3) {
      unit.push_back(3);
      zeros = 0;
    }
    zeros = byte == 0 ? zeros + 1 : 0;
    unit.push_back(byte);
  }
  return unit;
}

/// Reads bits, the highest of each byte first. Past the end they are 0.
class BitReader {
 public:
  explicit BitReader(ByteView bytes) : bytes_(bytes) {}

  bool isPastEnd() const { return position_ > bytes_.size() * 8; }
  void skip(std::size_t count) { position_ += count; }

  std::uint32_t bit() {
    const std::size_t byte = position_ / 8;
    const std::size_t shift = 7 - position_ % 8;
    ++position_;
    return byte < bytes_.size() ? bytes_[byte] >> shift & 1U : 0;
  }

  std::uint32_t bits(int count) {
    std::uint32_t value = 0;
    for (int i = 0; i < count; ++i) value = value << 1 | bit();
    return value;
  }

  /// ue(v), 9.2.
  std::uint64_t unsignedExpGolomb() {
    int zeros = 0;
    while (zeros < 32 && bit() == 0) ++zeros;
    return (std::uint64_t{1} << zeros) - 1 + bits(zeros);
  }

 private:
  ByteView bytes_;
  std::size_t position_ = 0;
};

/// 7.3.3, of which nothing is wanted.
void skipProfileTierLevel(BitReader& reader, std::uint32_t subLayers) {
  constexpr std::size_t profileBits = 88;
  constexpr std::size_t levelBits = 8;
  reader.skip(profileBits + levelBits);
  if (subLayers == 0) return;
  std::size_t bits = 0;
  for (std::uint32_t i = 0; i < 8; ++i) {
    const std::uint32_t presence = reader.bits(2);
    if (i < subLayers) bits += (presence >> 1) * profileBits + (presence & 1) * levelBits;
  }
  reader.skip(bits);
}

}  // namespace

UnitKind kind(ByteView unit) {
  if (unit.size() <= unitHeaderSize) return UnitKind::other;
  const int layer = (unit[0] & 1) << 5 | unit[1] >> 3;
  const int type = unit[0] >> 1 & 0x3F;
  if (layer != 0) return UnitKind::other;
  if (type < 32) return UnitKind::slice;
  return type == 33 ? UnitKind::sequenceParameters : UnitKind::other;
}

std::optional<PictureSize> pictureSize(ByteView sequenceParameters) {
  const Bytes payload = unescaped(sequenceParameters);
  BitReader reader(payload);
  reader.skip(unitHeaderSize * 8);
  reader.skip(4);  // sps_video_parameter_set_id
  const std::uint32_t subLayers = reader.bits(3);
  reader.skip(1);  // sps_temporal_id_nesting_flag
  skipProfileTierLevel(reader, subLayers);
  reader.unsignedExpGolomb();                           // sps_seq_parameter_set_id
  if (reader.unsignedExpGolomb() == 3) reader.skip(1);  // chroma_format_idc and its plane flag
  PictureSize size;
  size.width = reader.unsignedExpGolomb();
  size.height = reader.unsignedExpGolomb();
  if (reader.isPastEnd()) return std::nullopt;
  return size;
}

// The end is the last thing that the arithmetic decoder reads (9.3.4.3.5). Its register, nine bits,
// is then within the upper two of the current range's 256 or more values, and its lowest bit is the
// stop bit of the slice data (9.3.5.6). Two less, and it is in the part below, which says "go on",
// while everything that has been read before stays as it was.
Bytes withoutEnd(ByteView slice) {
  Bytes payload = unescaped(slice);
  const auto isSet = [&](std::size_t bit) { return (payload[bit / 8] >> (7 - bit % 8) & 1) != 0; };
  std::size_t bit = payload.size() * 8;  // the stop bit, once it is found
  do {
    if (bit <= (unitHeaderSize + 2) * 8) return payload;
    --bit;
  } while (!isSet(bit));
  for (int i = 1; i < 9; ++i) {
    --bit;
    const bool borrow = !isSet(bit);
    payload[bit / 8] ^= static_cast<std::uint8_t>(0x80 >> bit % 8);
    if (!borrow) break;
  }
  return escaped(payload);
}

}  // namespace orvane::HEVCStream
