#pragma once

#include <sys/types.h>

#include <compare>
#include <optional>
#include <string>

namespace orvane {

/// Equal for two paths of one file: symbolic links are followed and spelling does not count.
struct FileIdentity {
  dev_t device;
  ino_t inode;
  /// Empty for a file that exists. For a missing one, its name, and `device` and `inode` are its
  /// folder's. Lower-cased, because the file system may ignore letter case.
  std::string missingName;

  /// Looks at the file system as it is now. Returns no value when the folder is missing too, or
  /// cannot be searched.
  static std::optional<FileIdentity> of(const std::string& path);

  auto operator<=>(const FileIdentity&) const = default;
};

}  // namespace orvane
