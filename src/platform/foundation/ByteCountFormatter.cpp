#include "platform/foundation/ByteCountFormatter.h"

#include <unicode/locid.h>
#include <unicode/measunit.h>
#include <unicode/numberformatter.h>
#include <unicode/rbnf.h>

#include <array>
#include <cstddef>
#include <string_view>

namespace orvane {
namespace {

struct Unit {
  std::uint64_t step;   ///< bytes per unit of the last digit shown
  std::uint64_t limit;  ///< steps in one of the next unit
  const char* exponent;
  const char* identifier;  ///< Unicode TR 35, part 2, "Unit Identifiers"
  std::string_view french;
  std::string_view english;
};

constexpr std::array<Unit, 7> units{{
    {1, 1'000, "E0", "byte", "octet", "byte"},
    {1'000, 1'000, "E0", "kilobyte", "Ko", "KB"},
    {100'000, 10'000, "E-1", "megabyte", "Mo", "MB"},
    {10'000'000, 100'000, "E-2", "gigabyte", "Go", "GB"},
    {10'000'000'000, 100'000, "E-2", "terabyte", "To", "TB"},
    {10'000'000'000'000, 100'000, "E-2", "petabyte", "Po", "PB"},
    {10'000'000'000'000'000, 100'000, "E-2", "exabyte", "Eo", "EB"},
}};
constexpr const Unit& byteUnit = units[0];
constexpr const Unit& zeroUnit = units[1];

/// `bytes` in steps of `unit`, halves rounded up.
std::uint64_t stepCount(std::uint64_t bytes, const Unit& unit) {
  return bytes / unit.step + (bytes % unit.step * 2 >= unit.step ? 1 : 0);
}

/// The first unit in which the rounded number stays below a thousand.
const Unit& fittingUnit(std::uint64_t bytes) {
  if (bytes == 0) return zeroUnit;
  std::size_t at = 0;
  while (at + 1 < units.size() && stepCount(bytes, units[at]) >= units[at].limit) ++at;
  return units[at];
}

/// The tool's own name of `unit`, which differs from ICU's ("Ko", not "ko"). Empty when the
/// language has none.
std::string ownName(const Unit& unit, const icu::Locale& locale, bool isSingular) {
  const std::string_view language = locale.getLanguage();
  std::string name(language == "fr" ? unit.french : language == "en" ? unit.english : "");
  if (&unit == &byteUnit && !name.empty() && !isSingular) name += 's';
  return name;
}

/// The word for 0 in the locale's language, capitalised ("Zéro"); a digit when ICU knows none.
icu::UnicodeString spelledZero(const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::RuleBasedNumberFormat speller(icu::URBNF_SPELLOUT, locale, status);
  icu::UnicodeString text;
  speller.format(std::int64_t{0}, text, status);
  return text.toTitle(nullptr, locale);
}

/// ICU's default locale is "en_US_POSIX" or empty when the environment is C or C.UTF-8.
bool namesNoLanguage(const icu::Locale& locale) {
  return *locale.getLanguage() == '\0' || std::string_view(locale.getVariant()) == "POSIX";
}

}  // namespace

ByteCountFormatter::ByteCountFormatter() {
  const icu::Locale& locale = icu::Locale::getDefault();
  locale_ = namesNoLanguage(locale) ? "fr" : locale.getName();
}

std::string ByteCountFormatter::string(std::int64_t bytes) const {
  const icu::Locale locale(locale_.c_str());
  const auto value = static_cast<std::uint64_t>(bytes);
  const std::uint64_t magnitude = bytes < 0 ? 0 - value : value;
  const Unit& unit = fittingUnit(magnitude);
  const std::uint64_t steps = stepCount(magnitude, unit);
  const std::string decimal = (bytes < 0 ? "-" : "") + std::to_string(steps) + unit.exponent;

  UErrorCode status = U_ZERO_ERROR;
  const auto formatter = icu::number::NumberFormatter::withLocale(locale);
  const icu::UnicodeString number = formatter.formatDecimal(decimal, status).toString(status);
  icu::UnicodeString text;
  if (const std::string name = ownName(unit, locale, steps == 1); !name.empty()) {
    text = number + " " + icu::UnicodeString::fromUTF8(name);
  } else {
    text = formatter.unit(icu::MeasureUnit::forIdentifier(unit.identifier, status))
               .unitWidth(UNUM_UNIT_WIDTH_SHORT)
               .formatDecimal(decimal, status)
               .toString(status);
  }
  if (bytes == 0) text.findAndReplace(number, spelledZero(locale));
  std::string result;
  return text.toUTF8String(result);
}

}  // namespace orvane
