#include "platform/foundation/URLReference.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>

namespace orvane {
namespace {

// The characters that the parts of a URL may hold besides letters, digits and escapes (RFC 3986).
constexpr std::string_view schemePunctuation = "+-.";                 // section 3.1
constexpr std::string_view hostPunctuation = "-._~!$&'()*+,;=";       // section 3.2.2
constexpr std::string_view userPunctuation = "-._~!$&'()*+,;=:";      // section 3.2.1
constexpr std::string_view pathPunctuation = "-._~!$&'()*+,;=:@/";    // section 3.3
constexpr std::string_view queryPunctuation = "-._~!$&'()*+,;=:@/?";  // sections 3.4 and 3.5

bool isDigit(char character) { return character >= '0' && character <= '9'; }

bool isLetter(char character) {
  return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

bool isHexadecimalPair(std::string_view digits) {
  return digits.size() == 2 && digits.find_first_not_of("0123456789ABCDEFabcdef") == digits.npos;
}

bool isPlain(char character, std::string_view punctuation) {
  return isLetter(character) || isDigit(character) ||
         punctuation.find(character) != std::string_view::npos;
}

/// Whether `text` is made of letters, digits, escapes and `punctuation` only.
bool consistsOf(std::string_view text, std::string_view punctuation) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool isEscape = text[at] == '%' && isHexadecimalPair(text.substr(at + 1, 2));
    if (!isEscape && !isPlain(text[at], punctuation)) return false;
  }
  return true;
}

bool isScheme(std::string_view text) {
  return !text.empty() && isLetter(text[0]) && std::ranges::all_of(text, [](char character) {
    return isPlain(character, schemePunctuation);
  });
}

/// An IPv6 address, optionally with the zone of a network interface (RFC 6874).
bool isIPv6Address(std::string_view text) {
  constexpr std::string_view zoneMark = "%25";
  const std::string_view address = text.substr(0, text.find(zoneMark));
  in6_addr ignored;
  return address.find('\0') == address.npos &&
         inet_pton(AF_INET6, std::string(address).c_str(), &ignored) == 1 &&
         consistsOf(text.substr(address.size()), hostPunctuation);
}

bool isPort(std::string_view text) {
  return text.empty() || (text[0] == ':' && std::ranges::all_of(text.substr(1), isDigit));
}

bool isHostAndPort(std::string_view text) {
  if (!text.starts_with('[')) {
    const std::string_view host = text.substr(0, text.find(':'));
    return consistsOf(host, hostPunctuation) && isPort(text.substr(host.size()));
  }
  const std::size_t end = text.find(']');
  return end != text.npos && isIPv6Address(text.substr(1, end - 1)) && isPort(text.substr(end + 1));
}

bool isAuthority(std::string_view text) {
  const std::size_t userEnd = text.find('@');
  if (userEnd == text.npos) return isHostAndPort(text);
  return consistsOf(text.substr(0, userEnd), userPunctuation) &&
         isHostAndPort(text.substr(userEnd + 1));
}

/// Removes the text before the first of `delimiters` from `rest`, and returns it.
std::string_view takeUntil(std::string_view delimiters, std::string_view& rest) {
  const std::string_view part = rest.substr(0, rest.find_first_of(delimiters));
  rest.remove_prefix(part.size());
  return part;
}

bool isQueryAndFragment(std::string_view text) {
  const std::string_view query = takeUntil("#", text);
  return consistsOf(query, queryPunctuation) &&
         (text.empty() || consistsOf(text.substr(1), queryPunctuation));
}

}  // namespace

std::optional<URLReference> URLReference::parse(std::string_view text) {
  URLReference url;
  std::string_view rest = text;
  const std::string_view start = takeUntil(":/?#", rest);
  if (rest.starts_with(':')) {
    url.scheme = start;
    rest.remove_prefix(1);
    if (!isScheme(url.scheme)) return std::nullopt;
  } else {
    rest = text;
  }
  if (rest.starts_with("//")) {
    rest.remove_prefix(2);
    url.authority = takeUntil("/?#", rest);
  }
  url.path = takeUntil("?#", rest);
  const bool isWellFormed = !text.empty() && isAuthority(url.authority) &&
                            consistsOf(url.path, pathPunctuation) && isQueryAndFragment(rest);
  return isWellFormed ? std::optional(url) : std::nullopt;
}

std::string percentEncoded(std::string_view path) {
  constexpr std::string_view hexDigits = "0123456789ABCDEF";
  std::string encoded;
  for (const char character : path) {
    if (isPlain(character, pathPunctuation)) {
      encoded += character;
    } else {
      const auto byte = static_cast<unsigned char>(character);
      encoded += {'%', hexDigits[byte >> 4], hexDigits[byte & 15]};
    }
  }
  return encoded;
}

std::string percentDecoded(std::string_view part) {
  std::string decoded;
  for (std::size_t at = 0; at < part.size(); ++at) {
    unsigned char byte = static_cast<unsigned char>(part[at]);
    if (part[at] == '%') {
      std::from_chars(part.data() + at + 1, part.data() + at + 3, byte, 16);
      at += 2;
    }
    decoded += static_cast<char>(byte);
  }
  return decoded;
}

}  // namespace orvane
