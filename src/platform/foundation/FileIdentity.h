#pragma once

#include <sys/types.h>

#include <compare>
#include <optional>
#include <string>

namespace orvane {

/// Tells whether two paths lead to one file, through symbolic links and however they are spelt.
struct FileIdentity {
  dev_t device;
  ino_t inode;
  /// Empty for a file that exists. For a missing one its lower-cased name, in the folder that
  /// `device` and `inode` stand for: letter case may not count there.
  std::string missingName;

  /// Of the file as it is now. Nothing when its folder is missing too, or cannot be looked into.
  static std::optional<FileIdentity> of(const std::string& path);

  auto operator<=>(const FileIdentity&) const = default;
};

}  // namespace orvane
