#pragma once

#include <cstdint>
#include <string>

namespace orvane {

/// Sizes of files as people read them: decimal units (1 Ko = 1000 octets), no fraction for bytes
/// and kilobytes, one digit for megabytes, two from gigabytes on, trailing zeros dropped. The unit
/// is chosen after rounding: 999 950 bytes is "1 Mo".
class ByteCountFormatter {
 public:
  /// The language is that of ICU's default locale, or French when none is set.
  ByteCountFormatter();

  std::string string(std::int64_t bytes) const;

 private:
  std::string locale_;  ///< ICU locale identifier
};

}  // namespace orvane
