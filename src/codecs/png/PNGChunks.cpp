#include "codecs/png/PNGChunks.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "codecs/ImageSource.h"

namespace orvane {
namespace {

constexpr std::array<std::uint8_t, 8> signature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

constexpr std::size_t lengthSize = 4;
constexpr std::size_t typeSize = 4;
constexpr std::size_t crcSize = 4;

/// PNG clause 5.6: what tells of colour and of frames stands before the image data, eXIf anywhere.
enum class Place { anywhere, beforeImageData };

struct Slot {
  std::string_view type;
  std::optional<ByteView> PNGChunks::*payload;
  Place place;
};

constexpr std::array slots{
    Slot{"acTL", &PNGChunks::animationControl, Place::beforeImageData},
    Slot{"cICP", &PNGChunks::codePoints, Place::beforeImageData},
    Slot{"iCCP", &PNGChunks::profile, Place::beforeImageData},
    Slot{"sRGB", &PNGChunks::standardRGB, Place::beforeImageData},
    Slot{"gAMA", &PNGChunks::gamma, Place::beforeImageData},
    Slot{"cHRM", &PNGChunks::chromaticities, Place::beforeImageData},
    Slot{"eXIf", &PNGChunks::exchangeableImageMetadata, Place::anywhere},
};

/// PNG clause 5.5: over the type and the payload.
bool isIntact(ByteView checked, ByteView crc) {
  return crc32_z(crc32(0, nullptr, 0), checked.data(), checked.size()) == readPNGInteger(crc);
}

}  // namespace

bool hasPNGSignature(ByteView file) {
  return file.size() >= signature.size() &&
         std::ranges::equal(file.first(signature.size()), signature);
}

PNGChunks PNGChunks::read(ByteView file) {
  PNGChunks chunks;
  bool beforeImageData = true;
  for (ByteView rest = file.subspan(signature.size());;) {
    constexpr std::size_t overhead = lengthSize + typeSize + crcSize;
    const std::size_t length = rest.size() < overhead ? 0 : readPNGInteger(rest);
    if (rest.size() < overhead || length > rest.size() - overhead) {
      throw UnreadableImage("the file ends before IEND");
    }
    const ByteView checked = rest.subspan(lengthSize, typeSize + length);
    const ByteView crc = rest.subspan(lengthSize + checked.size(), crcSize);
    rest = rest.subspan(overhead + length);

    const std::string_view type(reinterpret_cast<const char*>(checked.data()), typeSize);
    if (type == "IEND") return chunks;
    if (type == "IDAT") beforeImageData = false;
    const auto slot = std::ranges::find(slots, type, &Slot::type);
    if (slot == slots.end() || chunks.*slot->payload) continue;
    if ((beforeImageData || slot->place == Place::anywhere) && isIntact(checked, crc)) {
      chunks.*slot->payload = checked.subspan(typeSize);
    }
  }
}

}  // namespace orvane
