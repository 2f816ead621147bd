#include "codecs/JPEGSampling.h"

#include <gtest/gtest.h>

#include <array>
#include <string_view>

namespace orvane {
namespace {

constexpr std::string_view named = "RGB";
constexpr std::string_view numbered = "\1\2\3";

/// A JPEG from its start up to and with its frame header: three components with these identifiers,
/// the first sampled 2×2, and what comes before the frame header.
Bytes headerOf(std::string_view identifiers, std::uint8_t otherSampling, const Bytes& before = {}) {
  Bytes file{0xFF, 0xD8};
  file.insert(file.end(), before.begin(), before.end());
  const Bytes frame{0xFF, 0xC2, 0, 17, 8, 0, 16, 0, 16, 3};
  file.insert(file.end(), frame.begin(), frame.end());
  for (std::size_t i = 0; i < 3; ++i) {
    file.push_back(static_cast<std::uint8_t>(identifiers[i]));
    file.push_back(i == 0 ? 0x22 : otherSampling);
    file.push_back(0);
  }
  return file;
}

Bytes adobeMarker(std::uint8_t transform) {
  return {0xFF, 0xEE, 0, 14, 'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0, transform};
}

TEST(JPEGSampling, knowsRGBByItsIdentifiers) {
  EXPECT_TRUE(isSubsampledRGB(headerOf(named, 0x11)));
  EXPECT_FALSE(isSubsampledRGB(headerOf(named, 0x22)));
  EXPECT_FALSE(isSubsampledRGB(headerOf(numbered, 0x11)));
}

TEST(JPEGSampling, knowsRGBByTheAdobeMarker) {
  EXPECT_TRUE(isSubsampledRGB(headerOf(numbered, 0x11, adobeMarker(0))));
  EXPECT_FALSE(isSubsampledRGB(headerOf(numbered, 0x22, adobeMarker(0))));
  EXPECT_FALSE(isSubsampledRGB(headerOf(numbered, 0x11, adobeMarker(1))));
}

TEST(JPEGSampling, passesOverOtherSegmentsAndFillBytes) {
  EXPECT_TRUE(isSubsampledRGB(headerOf(named, 0x11, {0xFF, 0xC4, 0, 3, 0, 0xFF, 0xFF})));
}

TEST(JPEGSampling, saysNoToWhatHasNoWholeFrameHeader) {
  const Bytes whole = headerOf(named, 0x11, adobeMarker(0));
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_FALSE(isSubsampledRGB(ByteView(whole).first(length))) << length;
  }
  EXPECT_FALSE(isSubsampledRGB(Bytes{0xFF, 0xD8, 0xFF, 0xC0, 0, 0, 0, 0}));
  EXPECT_FALSE(isSubsampledRGB(Bytes(64, 0xFF)));
}

}  // namespace
}  // namespace orvane
