#include "platform/foundation/FileIdentity.h"

#include <sys/stat.h>

#include <filesystem>
#include <system_error>

#include "platform/foundation/Text.h"

namespace orvane {
namespace {

std::optional<FileIdentity> ofExisting(const std::filesystem::path& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  return FileIdentity{.device = status.st_dev, .inode = status.st_ino, .missingName = ""};
}

/// The end of a chain of symbolic links, whether or not a file is there.
std::filesystem::path linkTarget(std::filesystem::path path) {
  constexpr int mostLinks = 40;  // Linux follows as many (path_resolution(7))
  std::error_code isNoLink;
  for (int links = 0; links < mostLinks; ++links) {
    const auto target = std::filesystem::read_symlink(path, isNoLink);
    if (isNoLink) break;
    path = path.parent_path() / target;
  }
  return path;
}

}  // namespace

std::optional<FileIdentity> FileIdentity::of(const std::string& path) {
  if (auto existing = ofExisting(path)) return existing;
  const std::filesystem::path missing = linkTarget(path);
  auto identity = ofExisting(missing.parent_path());
  if (identity) identity->missingName = Text::nameKey(missing.filename().string());
  return identity;
}

}  // namespace orvane
