#include "codecs/Exif.h"

#include <libexif/exif-data.h>

#include <algorithm>
#include <array>
#include <optional>

#include "platform/foundation/Handle.h"

namespace orvane::Exif {
namespace {

using ExifDataHandle = Handle<ExifData, exif_data_unref>;

constexpr std::array<std::uint8_t, 6> identifier{'E', 'x', 'i', 'f', 0, 0};

/// libexif reads only blocks that begin with the identifier.
Bytes withIdentifier(ByteView block) {
  Bytes bytes;
  bytes.reserve(identifier.size() + block.size());
  if (!hasIdentifier(block)) bytes.assign(identifier.begin(), identifier.end());
  bytes.insert(bytes.end(), block.begin(), block.end());
  return bytes;
}

ExifDataHandle load(ByteView block) {
  ExifDataHandle data = owned<ExifDataHandle>(exif_data_new());
  // Keeps the tags as they are stored: libexif would add missing ones and correct types and values.
  exif_data_unset_option(data.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
  const Bytes bytes = withIdentifier(block);
  exif_data_load_data(data.get(), bytes.data(), static_cast<unsigned>(bytes.size()));
  return data;
}

std::optional<int> firstInteger(const ExifEntry& entry, ExifByteOrder order) {
  if (entry.data == nullptr || entry.components == 0) return std::nullopt;
  if (entry.size < exif_format_get_size(entry.format)) return std::nullopt;
  switch (entry.format) {
    case EXIF_FORMAT_BYTE:
    case EXIF_FORMAT_SBYTE:
      return *entry.data;
    case EXIF_FORMAT_SHORT:
    case EXIF_FORMAT_SSHORT:
      return exif_get_short(entry.data, order);
    case EXIF_FORMAT_LONG:
    case EXIF_FORMAT_SLONG:
      return exif_get_slong(entry.data, order);
    default:
      return std::nullopt;
  }
}

}  // namespace

bool hasIdentifier(ByteView bytes) {
  return bytes.size() >= identifier.size() &&
         std::ranges::equal(bytes.first(identifier.size()), identifier);
}

int orientation(ByteView block) {
  constexpr int upright = 1;
  const ExifDataHandle data = load(block);
  const ExifEntry* entry = exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
  if (entry == nullptr) return upright;
  return firstInteger(*entry, exif_data_get_byte_order(data.get())).value_or(upright);
}

}  // namespace orvane::Exif
