#pragma once

#include <functional>
#include <span>
#include <string_view>
#include <vector>

#include "platform/foundation/FileURL.h"
#include "platform/foundation/LocalizedError.h"
#include "profiles/ExportProfile.h"

namespace orvane {

/// The user has neither a home folder nor another folder for application data.
class NoApplicationSupportFolderError : public LocalizedError {
 public:
  NoApplicationSupportFolderError();
};

/// JSON files in the user's application-support folder. Several programs share them: each save
/// replaces the whole file, and the last writer wins. A file that is a symbolic link stays one; the
/// file behind it is replaced.
namespace JSONFileStore {

inline constexpr std::string_view profilesFilename = "exportProfiles.json";

/// The folder of these files, found once per process; it need not exist yet.
/// Throws NoApplicationSupportFolderError.
const FileURL& folder();

/// Writes the list, and creates the folder when it is missing. Failures are ignored by design.
/// Throws NoApplicationSupportFolderError only.
void save(std::span<const ExportProfile> list, std::string_view filename);

/// The list in `profilesFilename`; empty when the file is missing, unreadable or malformed.
/// Throws NoApplicationSupportFolderError only.
std::vector<ExportProfile> loadProfiles();

/// Loads the list, lets `change` change it and saves it. Other processes that call this wait
/// meanwhile, so no change is lost. A file that is there but is no list is renamed first, to the
/// same name and ".bak", ".bak2" …, whichever is free; where that fails, nothing is saved. Failures
/// are ignored by design.
/// Throws NoApplicationSupportFolderError and what `change` throws.
void updateProfiles(const std::function<void(std::vector<ExportProfile>&)>& change);

}  // namespace JSONFileStore
}  // namespace orvane
