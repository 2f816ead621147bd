#include "platform/foundation/UUID.h"

#include <uuid/uuid.h>

namespace orvane {
namespace {

constexpr std::size_t canonicalLength = 36;

}  // namespace

UUID UUID::random() {
  UUID result;
  uuid_generate_random(result.bytes_.data());
  return result;
}

std::optional<UUID> UUID::fromString(std::string_view text) {
  if (text.size() != canonicalLength) return std::nullopt;
  UUID result;
  if (uuid_parse(std::string(text).c_str(), result.bytes_.data()) != 0) return std::nullopt;
  return result;
}

std::string UUID::string() const {
  std::array<char, canonicalLength + 1> text;
  uuid_unparse_upper(bytes_.data(), text.data());
  return text.data();
}

}  // namespace orvane
