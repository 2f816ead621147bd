#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The six formats that the tool reads and writes, in the order in which every list of them is
/// shown. Usable in a switch: `switch (format) { case ImageFormat::png: … }`.
class ImageFormat {
 public:
  enum Case : std::uint8_t { png, jpeg, heic, avif, webp, jxl };

  static constexpr std::array<Case, 6> allCases{png, jpeg, heic, avif, webp, jxl};

  constexpr ImageFormat(Case value) : case_(value) {}
  constexpr operator Case() const { return case_; }

  /// The format whose raw value is `rawValue`, byte for byte; there are no aliases.
  static std::optional<ImageFormat> fromRawValue(std::string_view rawValue);

  /// The format that a person typed: the raw value in any letter case.
  static std::optional<ImageFormat> fromUserText(std::string_view text);

  /// The format of a source, from the type identifier that its `ImageSource` reports.
  static std::optional<ImageFormat> fromTypeIdentifier(std::string_view typeIdentifier);

  /// The raw values of all formats in order, with `separator` between them.
  static std::string joinedRawValues(std::string_view separator);

  /// The name that is typed and stored, in lower-case ASCII: "jpeg".
  std::string_view rawValue() const;

  /// The extension of output files, without the dot: "jpg" for JPEG.
  std::string_view fileExtension() const;

  /// Uniform type identifier: "public.jpeg".
  std::string_view typeIdentifier() const;

  /// The name in messages: "JPEG XL".
  std::string_view displayName() const;

  /// Identity in lists: the raw value.
  std::string_view id() const { return rawValue(); }

 private:
  Case case_;
};

}  // namespace orvane

/// A format and its raw value hash alike.
template <>
struct std::hash<orvane::ImageFormat> {
  std::size_t operator()(orvane::ImageFormat format) const noexcept {
    return std::hash<std::string_view>{}(format.rawValue());
  }
};
