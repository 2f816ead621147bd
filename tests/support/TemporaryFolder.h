#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/Bytes.h"

namespace orvane::test {

/// A new folder under the system's temporary one, gone with its content at the end.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::string operator/(std::string_view name) const { return (path_ / name).string(); }

  /// Names of everything in it, hidden files too, sorted.
  std::vector<std::string> names() const;

 private:
  std::filesystem::path path_;
};

/// Throws std::runtime_error when it cannot.
Bytes readFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, ByteView bytes);
void writeFile(const std::filesystem::path& path, std::string_view text);

}  // namespace orvane::test
