#include "platform/foundation/FileURL.h"

#include <filesystem>
#include <system_error>

#include "platform/foundation/Text.h"
#include "platform/foundation/URLReference.h"

namespace orvane {
namespace {

std::string withoutTrailingSlash(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path;
}

}  // namespace

FileURL FileURL::fromPath(std::string_view path) {
  if (path.starts_with('/')) return FileURL(withoutTrailingSlash(std::string(path)));
  std::error_code currentFolderIsGone;
  std::string normal =
      (std::filesystem::current_path(currentFolderIsGone) / path).lexically_normal();
  return FileURL(withoutTrailingSlash(normal.empty() ? "." : std::move(normal)));
}

std::optional<FileURL> FileURL::fromURLString(std::string_view text) {
  const auto url = URLReference::parse(text);
  if (!url || Text::lowercased(url->scheme) != "file") return std::nullopt;
  if (!url->authority.empty() && Text::lowercased(url->authority) != "localhost") {
    return std::nullopt;
  }
  const std::string path = percentDecoded(url->path);
  const bool isPath = path.starts_with('/') && path.find('\0') == path.npos;
  return isPath ? std::optional(FileURL(withoutTrailingSlash(path))) : std::nullopt;
}

std::string_view FileURL::lastPathComponent() const {
  return std::string_view(path_).substr(path_.rfind('/') + 1);
}

std::string_view FileURL::baseName() const {
  const std::string_view name = lastPathComponent();
  const std::size_t dot = name.rfind('.');
  const bool hasExtension = dot != std::string_view::npos && dot != 0 && dot + 1 != name.size();
  return hasExtension ? name.substr(0, dot) : name;
}

FileURL FileURL::appending(std::string_view component) const {
  const std::string_view separator = path_.ends_with('/') ? "" : "/";
  return FileURL(withoutTrailingSlash((path_ + std::string(separator)).append(component)));
}

std::string FileURL::folderURLString() const {
  return "file://" + percentEncoded(path_ == "/" ? path_ : path_ + "/");
}

}  // namespace orvane
