#pragma once

#include <string>
#include <string_view>

/// Values as JSON text (RFC 8259), spelt as the other programs that share these files spell them.
namespace orvane::JSONText {

/// In quotes; slashes escaped, control characters as their short escape or \u00xx, everything else
/// as UTF-8. Ill-formed UTF-8 is shown as U+FFFD.
std::string string(std::string_view text);

/// Fewest digits that read back as `value`: "80", "62.5", "1e-05". `value` is finite: JSON has no
/// other numbers.
std::string number(double value);

}  // namespace orvane::JSONText
