#include "profiles/ExportProfileResolver.h"

#include <algorithm>
#include <utility>

#include "platform/foundation/LocalizedString.h"
#include "profiles/JSONFileStore.h"

namespace orvane {
namespace {

std::string notFoundDescription(const std::string& name) {
  const std::string format =
      LocalizedString::lookUp("error.profileNotFoundFormat", "Profil introuvable : %@");
  return LocalizedString::substituting(format, name);
}

std::optional<ExportProfile> chosenProfile(const std::optional<std::string>& name) {
  const auto profiles = JSONFileStore::loadProfiles();
  const auto found = std::ranges::find_if(profiles, [&name](const ExportProfile& profile) {
    return name ? profile.isNamed(*name) : profile.isDefault;
  });
  if (found != profiles.end()) return *found;
  if (name) throw ProfileNotFoundError(*name);
  return std::nullopt;
}

}  // namespace

ProfileNotFoundError::ProfileNotFoundError(std::string name)
    : LocalizedError(notFoundDescription(name)), name_(std::move(name)) {}

namespace ExportProfileResolver {

Resolution resolve(const std::optional<std::string>& profileName,
                   std::optional<double> explicitQuality, std::optional<ImageFormat> explicitFormat,
                   const std::optional<FileURL>& explicitOutputDirectory) {
  Resolution resolution;
  if (const auto profile = chosenProfile(profileName)) {
    resolution = {profile->format, profile->quality, profile->destinationFolder()};
  }
  resolution.format = explicitFormat.value_or(resolution.format);
  resolution.quality = explicitQuality.value_or(resolution.quality);
  if (explicitOutputDirectory) resolution.outputDirectory = explicitOutputDirectory;
  return resolution;
}

}  // namespace ExportProfileResolver
}  // namespace orvane
