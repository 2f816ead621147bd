#pragma once

#include <string>
#include <string_view>

/// Values as JSON text (RFC 8259), spelt as the other programs that share these files spell them.
namespace orvane::JSONText {

/// A quoted string: slashes are escaped, control characters become a short escape or \u00xx, and
/// all others stay UTF-8. Ill-formed UTF-8 becomes U+FFFD.
std::string string(std::string_view text);

/// The fewest digits that read back as `value`: "80", "62.5", "1e-05". `value` must be finite, for
/// JSON has no other numbers.
std::string number(double value);

}  // namespace orvane::JSONText
