#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "picture/ImageFormat.h"
#include "platform/foundation/Bytes.h"
#include "platform/foundation/FileURL.h"
#include "platform/foundation/UUID.h"

namespace orvane {

/// Export settings under a name, shared with the desktop application.
struct ExportProfile {
  UUID id;  ///< what tells one profile from another; names may repeat
  std::string name;
  ImageFormat format;
  double quality;  ///< perceptual, 1…100
  /// As the file has it, for another program may know what it means where this one does not.
  std::optional<std::string> destinationFolderURL;
  bool isDefault = false;  ///< where several are, the first in the list counts

  /// Whether people would call this profile `otherName`: letter case does not count, blanks do.
  bool isNamed(std::string_view otherName) const;

  /// Nothing without a URL, and where the URL is not that of a file of this machine.
  std::optional<FileURL> destinationFolder() const;

  bool operator==(const ExportProfile&) const = default;
};

/// The JSON array, on one line without spaces. Nothing when a quality is NaN or infinite.
std::optional<std::string> encodeProfiles(std::span<const ExportProfile> profiles);

/// The profiles of a JSON array in UTF-8, whatever its layout, its order of keys, and keys unknown
/// here. Nothing when any part of it is malformed, missing or of the wrong type.
std::optional<std::vector<ExportProfile>> decodeProfiles(ByteView bytes);

}  // namespace orvane
