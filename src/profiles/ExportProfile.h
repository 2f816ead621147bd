#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "picture/ImageFormat.h"
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

}  // namespace orvane
