#include "picture/ImageFormat.h"

#include <algorithm>

#include "platform/foundation/Text.h"

namespace orvane {
namespace {

struct Names {
  std::string_view rawValue;
  std::string_view fileExtension;
  std::string_view typeIdentifier;
  std::string_view displayName;
};

constexpr std::array<Names, ImageFormat::allCases.size()> names{{
    {"png", "png", "public.png", "PNG"},
    {"jpeg", "jpg", "public.jpeg", "JPEG"},
    {"heic", "heic", "public.heic", "HEIC"},
    {"avif", "avif", "public.avif", "AVIF"},
    {"webp", "webp", "org.webmproject.webp", "WebP"},
    {"jxl", "jxl", "public.jpeg-xl", "JPEG XL"},
}};

std::optional<ImageFormat> formatWhere(std::string_view Names::*name, std::string_view value) {
  const auto found = std::ranges::find(names, value, name);
  if (found == names.end()) return std::nullopt;
  return ImageFormat::allCases[static_cast<std::size_t>(found - names.begin())];
}

}  // namespace

std::optional<ImageFormat> ImageFormat::fromRawValue(std::string_view rawValue) {
  return formatWhere(&Names::rawValue, rawValue);
}

std::optional<ImageFormat> ImageFormat::fromUserText(std::string_view text) {
  return fromRawValue(Text::lowercased(text));
}

std::optional<ImageFormat> ImageFormat::fromTypeIdentifier(std::string_view typeIdentifier) {
  return formatWhere(&Names::typeIdentifier, typeIdentifier);
}

std::string ImageFormat::joinedRawValues(std::string_view separator) {
  std::string joined;
  for (const Names& format : names) {
    if (!joined.empty()) joined += separator;
    joined += format.rawValue;
  }
  return joined;
}

std::string_view ImageFormat::rawValue() const { return names[case_].rawValue; }
std::string_view ImageFormat::fileExtension() const { return names[case_].fileExtension; }
std::string_view ImageFormat::typeIdentifier() const { return names[case_].typeIdentifier; }
std::string_view ImageFormat::displayName() const { return names[case_].displayName; }

}  // namespace orvane
