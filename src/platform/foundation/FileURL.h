#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The place of a file: its path, as bytes.
class FileURL {
 public:
  /// A relative path is resolved against the current folder, with "." and ".." taken out; an
  /// absolute one stays as typed, less a trailing slash. The empty path is the current folder.
  /// Where the current folder is gone, a relative path stays relative: opening it says so.
  static FileURL fromPath(std::string_view path);

  /// The path of a "file:" URL (RFC 8089) of this machine. Nothing when `text` is no such URL, or
  /// when its path holds a NUL.
  static std::optional<FileURL> fromURLString(std::string_view text);

  /// Never empty. Absolute, and without a trailing slash (but for "/" itself).
  const std::string& path() const { return path_; }

  /// What follows the last slash.
  std::string_view lastPathComponent() const;

  /// The last path component without what follows its last ".", when that "." is neither its first
  /// nor its last character: "IMG_01.final" of "IMG_01.final.PNG", ".hidden" of ".hidden".
  std::string_view baseName() const;

  FileURL appending(std::string_view component) const;

  /// "file://" + percent-encoded path + "/": how folders are stored (RFC 3986, section 2.1).
  std::string folderURLString() const;

  bool operator==(const FileURL&) const = default;

 private:
  explicit FileURL(std::string path) : path_(std::move(path)) {}

  std::string path_;
};

}  // namespace orvane
