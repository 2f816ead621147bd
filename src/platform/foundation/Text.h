#pragma once

#include <string>
#include <string_view>

namespace orvane {

/// Unicode text in UTF-8. `trimmed` leaves bytes that are not UTF-8; the other functions take them
/// for U+FFFD. No function throws on them.
namespace Text {

/// Full Unicode lower-casing, root locale.
std::string lowercased(std::string_view text);

/// `text` lower-cased and composed (Unicode Normalization Form C): equal for two names that a file
/// system without letter case takes for one.
std::string nameKey(std::string_view name);

/// Canonical caseless match: letter case and composition do not count, accents do.
bool equalsIgnoringCase(std::string_view left, std::string_view right);

/// `text` without the Unicode White_Space at both ends.
std::string trimmed(std::string_view text);

/// `text` with "?" for every control character (Unicode general category Cc).
std::string withoutControlCharacters(std::string_view text);

/// `text` with every maximal ill-formed sequence (Unicode 3.9, table 3-7) replaced by U+FFFD.
std::string wellFormed(std::string_view text);

}  // namespace Text
}  // namespace orvane
