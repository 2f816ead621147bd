#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The parts of a URL, or of a reference relative to one (RFC 3986, section 4.1). They are views of
/// the text that was parsed, with its escapes.
struct URLReference {
  std::string_view scheme;     ///< empty in a relative reference
  std::string_view authority;  ///< user, host and port; empty where there is none
  std::string_view path;

  /// Nothing when `text` is empty or breaks the grammar.
  static std::optional<URLReference> parse(std::string_view text);
};

/// `path` with every byte that a URL's path cannot hold as "%XX" (RFC 3986, section 2.1).
std::string percentEncoded(std::string_view path);

/// A part of a parsed URL with the bytes that its escapes stand for.
std::string percentDecoded(std::string_view part);

}  // namespace orvane
