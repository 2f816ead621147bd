#include "codecs/png/PNGChunks.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "codecs/UnreadableImage.h"

namespace orvane {
namespace {

/// PNG clause 5.6: chunks about colour and frames precede the image data; eXIf stands anywhere.
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

/// The CRC covers the type and the payload (PNG clause 5.5).
bool isIntact(ByteView checked, ByteView crc) {
  return crc32_z(crc32(0, nullptr, 0), checked.data(), checked.size()) == readPNGInteger(crc);
}

}  // namespace

bool hasPNGSignature(ByteView file) {
  return file.size() >= pngSignature.size() &&
         std::ranges::equal(file.first(pngSignature.size()), pngSignature);
}

PNGChunks PNGChunks::read(ByteView file) {
  PNGChunks chunks;
  bool beforeImageData = true;
  for (ByteView rest = file.subspan(pngSignature.size());;) {
    const bool isFramed = rest.size() >= PNGChunkSize::allButPayload;
    const std::size_t length = isFramed ? readPNGInteger(rest) : 0;
    if (!isFramed || length > rest.size() - PNGChunkSize::allButPayload) {
      throw UnreadableImage("the file ends before IEND");
    }
    const ByteView checked = rest.subspan(PNGChunkSize::length, PNGChunkSize::type + length);
    const ByteView crc = rest.subspan(PNGChunkSize::length + checked.size(), PNGChunkSize::crc);
    rest = rest.subspan(PNGChunkSize::allButPayload + length);

    const std::string_view type(reinterpret_cast<const char*>(checked.data()), PNGChunkSize::type);
    if (type == "IEND") return chunks;
    if (type == "IDAT") beforeImageData = false;
    const auto slot = std::ranges::find(slots, type, &Slot::type);
    if (slot == slots.end() || chunks.*slot->payload) continue;
    if ((beforeImageData || slot->place == Place::anywhere) && isIntact(checked, crc)) {
      chunks.*slot->payload = checked.subspan(PNGChunkSize::type);
    }
  }
}

}  // namespace orvane
