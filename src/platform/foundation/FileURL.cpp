#include "platform/foundation/FileURL.h"

#include <charconv>
#include <filesystem>
#include <system_error>

#include "platform/foundation/Text.h"

namespace orvane {
namespace {

std::string withoutTrailingSlash(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path;
}

/// RFC 3986, section 3.3: what a path may hold as it is.
bool isPathCharacter(char character) {
  const bool isAlphanumeric = (character >= '0' && character <= '9') ||
                              (character >= 'A' && character <= 'Z') ||
                              (character >= 'a' && character <= 'z');
  return isAlphanumeric ||
         std::string_view("/-._~!$&'()*+,;=:@").find(character) != std::string_view::npos;
}

std::string percentEncoded(std::string_view path) {
  constexpr std::string_view hexDigits = "0123456789ABCDEF";
  std::string encoded;
  for (const char character : path) {
    if (isPathCharacter(character)) {
      encoded += character;
    } else {
      const auto byte = static_cast<unsigned char>(character);
      encoded += {'%', hexDigits[byte >> 4], hexDigits[byte & 15]};
    }
  }
  return encoded;
}

/// Nothing when an escape is malformed, or stands for a NUL, which no path holds.
std::optional<std::string> percentDecoded(std::string_view text) {
  std::string decoded;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '%') {
      decoded += text[at];
      continue;
    }
    const std::string_view digits = text.substr(at + 1, 2);
    const char* end = digits.data() + digits.size();
    unsigned char byte = 0;
    const auto [stop, error] = std::from_chars(digits.data(), end, byte, 16);
    if (digits.size() != 2 || stop != end || byte == 0) return std::nullopt;
    decoded += static_cast<char>(byte);
    at += 2;
  }
  return decoded;
}

}  // namespace

FileURL FileURL::fromPath(std::string_view path) {
  if (path.starts_with('/')) return FileURL(withoutTrailingSlash(std::string(path)));
  // Where the current folder is gone, the path stays relative and opening it says so.
  std::error_code noCurrentFolder;
  const auto absolute = std::filesystem::current_path(noCurrentFolder) / path;
  return FileURL(withoutTrailingSlash(absolute.lexically_normal()));
}

std::optional<FileURL> FileURL::fromURLString(std::string_view url) {
  constexpr std::string_view scheme = "file:";
  if (Text::lowercased(url.substr(0, scheme.size())) != scheme) return std::nullopt;
  url.remove_prefix(scheme.size());
  // A file has no query and no fragment.
  url = url.substr(0, url.find_first_of("?#"));
  if (url.starts_with("//")) {
    url.remove_prefix(2);
    const std::string_view host = url.substr(0, url.find('/'));
    if (!host.empty() && Text::lowercased(host) != "localhost") return std::nullopt;
    url.remove_prefix(host.size());
  }
  if (!url.starts_with('/')) return std::nullopt;
  const auto path = percentDecoded(url);
  if (!path) return std::nullopt;
  return FileURL(withoutTrailingSlash(*path));
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
