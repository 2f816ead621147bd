#include "profiles/ExportProfile.h"

#include "platform/foundation/Text.h"

namespace orvane {

bool ExportProfile::isNamed(std::string_view otherName) const {
  return Text::equalsIgnoringCase(name, otherName);
}

std::optional<FileURL> ExportProfile::destinationFolder() const {
  return destinationFolderURL ? FileURL::fromURLString(*destinationFolderURL) : std::nullopt;
}

}  // namespace orvane
