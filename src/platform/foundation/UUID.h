#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// RFC 9562.
class UUID {
 public:
  static UUID random();

  /// From the canonical 36-character form, in either letter case.
  static std::optional<UUID> fromString(std::string_view text);

  /// The canonical form, upper case.
  std::string string() const;

  bool operator==(const UUID&) const = default;

 private:
  std::array<std::uint8_t, 16> bytes_{};
};

}  // namespace orvane
