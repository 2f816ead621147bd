#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The place of a file: its path, as bytes.
class FileURL {
 public:
  /// A relative path is resolved against the current folder, and "." and ".." are taken out. An
  /// absolute one stays as typed, without trailing slashes. The empty path is the current folder.
  /// If the current folder is gone, a relative path stays relative, and opening it fails.
  static FileURL fromPath(std::string_view path);

  /// Reads a "file:" URL (RFC 8089). Returns no value when `text` is not one, names another machine
  /// or holds an escaped NUL.
  static std::optional<FileURL> fromURLString(std::string_view text);

  /// Never empty, and without a trailing slash except in "/". Relative only if the current folder
  /// was gone.
  const std::string& path() const { return path_; }

  /// The text after the last slash.
  std::string_view lastPathComponent() const;

  /// The last path component without its extension. A "." that is the first or the last character
  /// starts no extension: "IMG_01.final" of "IMG_01.final.PNG", ".hidden" of ".hidden".
  std::string_view baseName() const;

  FileURL appending(std::string_view component) const;

  /// The URL of a folder: "file://", the percent-encoded path and "/" (RFC 3986, section 2.1).
  std::string folderURLString() const;

  bool operator==(const FileURL&) const = default;

 private:
  explicit FileURL(std::string path) : path_(std::move(path)) {}

  std::string path_;
};

}  // namespace orvane
