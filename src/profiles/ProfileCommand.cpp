#include "profiles/ProfileCommand.h"

#include <algorithm>

#include "picture/ImageFormat.h"
#include "platform/foundation/FileURL.h"
#include "platform/foundation/Files.h"
#include "platform/foundation/Number.h"
#include "platform/foundation/Text.h"
#include "profiles/JSONFileStore.h"

namespace orvane {
namespace {

using OptionalText = std::optional<std::string>;

std::string parsedName(const std::string& typed) {
  std::string name = Text::trimmed(typed);
  if (name.empty()) throw ProfileCommandError("--create-profile attend un nom non vide.");
  return name;
}

ImageFormat parsedFormat(const OptionalText& typed) {
  const auto format = typed ? ImageFormat::fromUserText(*typed) : std::nullopt;
  if (!format) {
    throw ProfileCommandError("--create-profile nécessite --format <" +
                              ImageFormat::joinedRawValues("|") + ">.");
  }
  return *format;
}

double parsedQuality(const OptionalText& typed) {
  const auto quality = typed ? Number::parseDouble(*typed) : std::nullopt;
  if (!quality || !(*quality >= 1 && *quality <= 100)) {
    throw ProfileCommandError("--create-profile nécessite --quality <1-100>.");
  }
  return *quality;
}

OptionalText parsedFolderURL(const OptionalText& typed) {
  if (!typed) return std::nullopt;
  const FileURL folder = FileURL::fromPath(*typed);
  // The stored path is checked, not the typed one: ".." is taken out of it before any symbolic
  // link is followed, so the two may name different folders ("link/../x"). A path that is still
  // relative, because the current folder is gone, would mean another folder in the next run.
  const bool isUsable = !typed->empty() && folder.path().starts_with('/');
  if (!isUsable || !Files::isFolder(folder.path())) {
    throw ProfileCommandError("--output doit être un dossier existant : " + *typed);
  }
  return folder.folderURLString();
}

/// Replaces the first profile of the same name, whose id and default mark are kept. Appends
/// `profile` when there is none.
void insert(ExportProfile profile, std::vector<ExportProfile>& profiles) {
  const auto found = std::ranges::find_if(
      profiles, [&](const ExportProfile& other) { return other.isNamed(profile.name); });
  if (found == profiles.end()) {
    profiles.push_back(std::move(profile));
  } else {
    profile.id = found->id;
    profile.isDefault = found->isDefault;
    *found = std::move(profile);
  }
}

std::string confirmation(const ExportProfile& profile) {
  std::string text = "Profil « " + profile.name + " » enregistré (" +
                     std::string(profile.format.rawValue()) + ", qualité " +
                     std::to_string(static_cast<int>(profile.quality));
  if (const auto folder = profile.destinationFolder()) text += ", dossier " + folder->path();
  return text + ").";
}

}  // namespace

std::string createProfile(const std::string& name, const OptionalText& formatRaw,
                          const OptionalText& qualityRaw, const OptionalText& outputRaw) {
  // Braced initialisers run in order, so the checks do too.
  const ExportProfile profile{.id = UUID::random(),
                              .name = parsedName(name),
                              .format = parsedFormat(formatRaw),
                              .quality = parsedQuality(qualityRaw),
                              .destinationFolderURL = parsedFolderURL(outputRaw)};
  JSONFileStore::updateProfiles([&](auto& profiles) { insert(profile, profiles); });
  return confirmation(profile);
}

std::string runProfileCommand(std::span<const std::string> arguments) {
  if (arguments.size() < 2) {
    throw ProfileCommandError(
        "Usage : orvane-cli --create-profile <nom> [--format <format>] [--quality <1-100>] "
        "[--output <dossier>]");
  }
  OptionalText format;
  OptionalText quality;
  OptionalText output;
  for (std::size_t at = 2; at < arguments.size(); at += 2) {
    const std::string& option = arguments[at];
    OptionalText* value = option == "--format"    ? &format
                          : option == "--quality" ? &quality
                          : option == "--output"  ? &output
                                                  : nullptr;
    if (value == nullptr) {
      throw ProfileCommandError("Option inconnue pour --create-profile : " + option);
    }
    // An option without a value, at the end, resets the value given before.
    *value = at + 1 < arguments.size() ? OptionalText(arguments[at + 1]) : std::nullopt;
  }
  return createProfile(arguments[1], format, quality, output);
}

}  // namespace orvane
