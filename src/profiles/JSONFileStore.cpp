#include "profiles/JSONFileStore.h"

#include "platform/foundation/FileError.h"
#include "platform/foundation/Files.h"
#include "profiles/ExportProfileJSON.h"

namespace orvane {
namespace {

FileURL storeFolder() {
  const auto applicationSupport = Files::applicationSupportFolder();
  if (!applicationSupport) throw NoApplicationSupportFolderError();
  return FileURL::fromPath(*applicationSupport).appending("Orvane");
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
    Files::writeAtomically(folder().appending(filename).path(), bytesOf(*json));
  } catch (const FileError&) {
    // By design: the profile command prints its confirmation all the same.
  }
}

std::vector<ExportProfile> loadProfiles() {
  const FileURL file = folder().appending(profilesFilename);
  try {
    return ExportProfileJSON::decode(Files::readWhole(file.path()))
        .value_or(std::vector<ExportProfile>());
  } catch (const std::exception&) {
    return {};  // FileError or std::bad_alloc
  }
}

}  // namespace JSONFileStore
}  // namespace orvane
