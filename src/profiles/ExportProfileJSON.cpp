#include "profiles/ExportProfileJSON.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <nlohmann/json.hpp>

#include "platform/foundation/Memory.h"
#include "platform/foundation/URLReference.h"
#include "profiles/JSONText.h"

namespace orvane::ExportProfileJSON {
namespace {

using nlohmann::json;

/// Bytes of memory for a byte of text. The parser was seen to take up to 76, for nested arrays.
constexpr std::size_t treeBytesPerByte = 100;

std::string encodedProfile(const ExportProfile& profile) {
  std::string object = "{\"id\":" + JSONText::string(profile.id.string()) +
                       ",\"name\":" + JSONText::string(profile.name) +
                       ",\"format\":" + JSONText::string(profile.format.rawValue()) +
                       ",\"quality\":" + JSONText::number(profile.quality);
  if (profile.destinationFolderURL) {
    object += ",\"destinationFolder\":" + JSONText::string(*profile.destinationFolderURL);
  }
  return object + ",\"isDefault\":" + (profile.isDefault ? "true" : "false") + "}";
}

/// A value has the right type, but its key does not allow it.
struct UnusableValue : std::exception {};

template <typename Value>
Value orUnusable(std::optional<Value> value) {
  if (!value) throw UnusableValue();
  return *std::move(value);
}

/// The value of an optional key; null when the key is absent or its value is JSON's null.
const json* find(const json& object, const char* key) {
  const auto found = object.find(key);
  return found == object.end() || found->is_null() ? nullptr : &*found;
}

/// Throws json::exception for a missing key and a wrong type, UnusableValue for the rest.
ExportProfile decodedProfile(const json& object) {
  ExportProfile profile{
      .id = orUnusable(UUID::fromString(object.at("id").get<std::string>())),
      .name = object.at("name").get<std::string>(),
      .format = orUnusable(ImageFormat::fromRawValue(object.at("format").get<std::string>())),
      .quality = object.at("quality").get<double>()};
  if (const json* url = find(object, "destinationFolder")) {
    profile.destinationFolderURL = url->get<std::string>();
    if (!URLReference::parse(*profile.destinationFolderURL)) throw UnusableValue();
  }
  if (const json* flag = find(object, "isDefault")) profile.isDefault = flag->get<bool>();
  return profile;
}

}  // namespace

std::optional<std::string> encode(std::span<const ExportProfile> profiles) {
  std::string objects;
  for (const ExportProfile& profile : profiles) {
    if (!std::isfinite(profile.quality)) return std::nullopt;
    objects += (objects.empty() ? "" : ",") + encodedProfile(profile);
  }
  return "[" + objects + "]";
}

std::optional<std::vector<ExportProfile>> decode(ByteView bytes) try {
  // The parser would take a NUL for the end of the text and ignore what follows.
  if (std::ranges::find(bytes, 0) != bytes.end()) return std::nullopt;
  // The parser's tree ends the process where it cannot get memory while it is taken apart.
  Memory::require(bytes.size() * treeBytesPerByte);
  const json array = json::parse(bytes.begin(), bytes.end());
  if (!array.is_array()) return std::nullopt;
  std::vector<ExportProfile> profiles;
  std::ranges::transform(array, std::back_inserter(profiles), decodedProfile);
  return profiles;
} catch (const std::exception&) {
  return std::nullopt;  // json::exception, UnusableValue or std::bad_alloc
}

}  // namespace orvane::ExportProfileJSON
