#include "profiles/JSONFileStore.h"

#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

#include "platform/foundation/FileError.h"
#include "platform/foundation/Files.h"
#include "platform/foundation/FolderLock.h"
#include "platform/foundation/TemporaryNames.h"
#include "profiles/ExportProfileJSON.h"

namespace orvane {
namespace {

FileURL storeFolder() {
  const auto applicationSupport = Files::applicationSupportFolder();
  if (!applicationSupport) throw NoApplicationSupportFolderError();
  return FileURL::fromPath(*applicationSupport).appending("Orvane");
}

/// The path of the file behind symbolic links, which may be missing.
std::string behindLinks(std::filesystem::path path) {
  constexpr int mostLinks = 40;  // path_resolution(7)
  std::error_code ignored;
  for (int links = 0; links < mostLinks && std::filesystem::is_symlink(path, ignored); ++links) {
    path = path.parent_path() / std::filesystem::read_symlink(path, ignored);
  }
  return path;
}

std::string pathOf(std::string_view filename) {
  return behindLinks(JSONFileStore::folder().appending(filename).path());
}

/// No value when the file is missing, unreadable or malformed.
std::optional<std::vector<ExportProfile>> readProfiles(const std::string& path) try {
  return ExportProfileJSON::decode(Files::readWhole(path));
} catch (const std::exception&) {
  return std::nullopt;  // FileError or std::bad_alloc
}

/// Renames the file, when it exists, to a name that is free. Returns whether it is out of the way.
bool setAside(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return true;
  std::string aside = path + ".bak";
  for (int number = 2; exists(std::filesystem::symlink_status(aside, error)); ++number) {
    aside = path + ".bak" + std::to_string(number);
  }
  std::filesystem::rename(path, aside, error);
  return !error;
}

ByteView bytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

NoApplicationSupportFolderError::NoApplicationSupportFolderError()
    : LocalizedError("Dossier des données d'application introuvable.") {}

namespace JSONFileStore {

const FileURL& folder() {
  static const FileURL folder = storeFolder();
  return folder;
}

void save(std::span<const ExportProfile> list, std::string_view filename) {
  const auto json = ExportProfileJSON::encode(list);
  if (!json) return;
  Files::createFolders(folder().path());
  try {
    Files::writeAtomically(pathOf(filename), bytesOf(*json));
  } catch (const FileError&) {
    // By design: the profile command prints its confirmation all the same.
  }
}

std::vector<ExportProfile> loadProfiles() {
  return readProfiles(pathOf(profilesFilename)).value_or(std::vector<ExportProfile>());
}

void updateProfiles(const std::function<void(std::vector<ExportProfile>&)>& change) {
  Files::createFolders(folder().path());
  const FolderLock lock(folder().path());
  const std::string path = pathOf(profilesFilename);
  TemporaryNames::removeLeftovers(std::filesystem::path(path).parent_path());
  auto profiles = readProfiles(path);
  if (!profiles) {
    if (!setAside(path)) return;
    profiles.emplace();
  }
  change(*profiles);
  save(*profiles, profilesFilename);
}

}  // namespace JSONFileStore
}  // namespace orvane
