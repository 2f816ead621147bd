#include "platform/foundation/UUID.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

TEST(UUID, isReadInEitherLetterCaseAndWrittenInUpperCase) {
  const std::string upper = "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0";
  const auto fromUpper = UUID::fromString(upper);
  const auto fromLower = UUID::fromString("0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0");
  ASSERT_TRUE(fromUpper.has_value());
  EXPECT_EQ(fromUpper, fromLower);
  EXPECT_EQ(fromUpper->string(), upper);
}

TEST(UUID, isReadInItsCanonicalFormOnly) {
  using namespace std::string_view_literals;
  for (const auto text :
       {""sv, "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F"sv, "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F00"sv,
        "0F1E2D3C4B5A69788796A5B4C3D2E1F0"sv, "{0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0}"sv,
        "0F1E2D3G-4B5A-6978-8796-A5B4C3D2E1F0"sv, "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F "sv,
        "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F\0"sv, "0F1E2D3C04B5A-6978-8796-A5B4C3D2E1F0"sv}) {
    EXPECT_FALSE(UUID::fromString(text).has_value()) << text;
  }
}

// RFC 9562, sections 4.1, 4.2 and 5.4: version 4, variant 10.
TEST(UUID, isRandomOfVersionFour) {
  const UUID one = UUID::random();
  const std::string text = one.string();
  ASSERT_EQ(text.size(), 36u);
  EXPECT_EQ(text[14], '4');
  EXPECT_NE(std::string("89AB").find(text[19]), std::string::npos);
  EXPECT_EQ(UUID::fromString(text), one);
  EXPECT_NE(UUID::random(), one);
}

}  // namespace
}  // namespace orvane
