#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Numbers as text, always in the C locale.
namespace orvane::Number {

/// Reads `text` as strtod does (sign, fraction, exponent, hexadecimal, "inf", "nan"). Returns no
/// value when it is empty, starts with a blank or is not used up.
std::optional<double> parseDouble(std::string_view text);

/// Reads an optional "+" or "-" and decimal digits. Returns no value for anything else, or when the
/// number does not fit into 64 bits.
std::optional<std::int64_t> parseInteger(std::string_view text);

/// The fewest digits that read back as `value`, always with a fraction or an exponent: "150.0",
/// "0.5", "1e+16", "1e-05", "nan", "inf". Plain decimal for 0 and 1e-4 ≤ |value| < 1e16.
std::string description(double value);

}  // namespace orvane::Number
