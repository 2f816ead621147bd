#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The parts of a URL, or of a reference relative to one (RFC 3986, section 4.1). They are views of
/// the parsed text, escapes included.
struct URLReference {
  std::string_view scheme;     ///< empty in a relative reference
  std::string_view authority;  ///< user, host and port; empty where there is none
  std::string_view path;

  /// Returns no value when `text` is empty or breaks the grammar.
  static std::optional<URLReference> parse(std::string_view text);
};

/// Replaces every byte that a URL's path cannot hold by "%XX" (RFC 3986, section 2.1).
std::string percentEncoded(std::string_view path);

/// Replaces every "%XX" in a part of a parsed URL by the byte that it stands for.
std::string percentDecoded(std::string_view part);

}  // namespace orvane
