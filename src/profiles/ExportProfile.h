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
  UUID id;  ///< unique, as names may repeat
  std::string name;
  ImageFormat format;
  double quality;  ///< perceptual, 1…100
  /// The text of the file, unchanged: another program may understand a URL that this one does not.
  std::optional<std::string> destinationFolderURL;
  bool isDefault = false;  ///< of several, the first in the list counts

  /// Compares names without regard to letter case; blanks count.
  bool isNamed(std::string_view otherName) const;

  /// The folder of the URL; no value when there is no URL or it is not a file of this machine.
  std::optional<FileURL> destinationFolder() const;

  bool operator==(const ExportProfile&) const = default;
};

}  // namespace orvane
