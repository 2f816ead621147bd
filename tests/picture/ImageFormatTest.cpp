#include "picture/ImageFormat.h"

#include <gtest/gtest.h>

#include "picture/ImageProcessingError.h"

namespace orvane {
namespace {

TEST(ImageFormat, liesInItsFixedOrderWithPNGFirstAndJPEGXLLast) {
  ASSERT_EQ(ImageFormat::allCases.size(), 6u);
  EXPECT_EQ(ImageFormat::joinedRawValues(", "), "png, jpeg, heic, avif, webp, jxl");
  EXPECT_EQ(ImageFormat::joinedRawValues("|"), "png|jpeg|heic|avif|webp|jxl");
}

TEST(ImageFormat, hasOneNameOfEachKindPerCase) {
  struct Row {
    ImageFormat format;
    std::string_view rawValue, fileExtension, typeIdentifier, displayName;
  };
  const Row rows[]{
      {ImageFormat::png, "png", "png", "public.png", "PNG"},
      {ImageFormat::jpeg, "jpeg", "jpg", "public.jpeg", "JPEG"},
      {ImageFormat::heic, "heic", "heic", "public.heic", "HEIC"},
      {ImageFormat::avif, "avif", "avif", "public.avif", "AVIF"},
      {ImageFormat::webp, "webp", "webp", "org.webmproject.webp", "WebP"},
      {ImageFormat::jxl, "jxl", "jxl", "public.jpeg-xl", "JPEG XL"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(row.format.rawValue(), row.rawValue);
    EXPECT_EQ(row.format.id(), row.rawValue);
    EXPECT_EQ(row.format.fileExtension(), row.fileExtension);
    EXPECT_EQ(row.format.typeIdentifier(), row.typeIdentifier);
    EXPECT_EQ(row.format.displayName(), row.displayName);
    EXPECT_EQ(ImageFormat::fromRawValue(row.rawValue), row.format);
    EXPECT_EQ(ImageFormat::fromTypeIdentifier(row.typeIdentifier), row.format);
    EXPECT_EQ(std::hash<ImageFormat>{}(row.format), std::hash<std::string_view>{}(row.rawValue));
  }
}

TEST(ImageFormat, isFoundByItsExactRawValueOnly) {
  for (const char* text : {"jpg", "PNG", "", "png ", "jpeg-xl", "tiff"}) {
    EXPECT_FALSE(ImageFormat::fromRawValue(text).has_value()) << text;
  }
  EXPECT_FALSE(ImageFormat::fromTypeIdentifier("Public.png").has_value());
  EXPECT_FALSE(ImageFormat::fromTypeIdentifier("public.tiff").has_value());
}

TEST(ImageFormat, isFoundByUserTextInAnyLetterCaseButWithoutAliases) {
  EXPECT_EQ(ImageFormat::fromUserText("JPEG"), ImageFormat::jpeg);
  EXPECT_EQ(ImageFormat::fromUserText("Png"), ImageFormat::png);
  EXPECT_FALSE(ImageFormat::fromUserText("jpg").has_value());
  EXPECT_FALSE(ImageFormat::fromUserText("JPG").has_value());
}

TEST(ImageProcessingError, namesTheFormatThatCouldNotBeEncoded) {
  EXPECT_EQ(ImageProcessingError::encodingFailed(ImageFormat::jxl).localizedDescription(),
            "Échec de l'encodage au format JPEG XL.");
  EXPECT_EQ(ImageProcessingError::encodingFailed(ImageFormat::webp).localizedDescription(),
            "Échec de l'encodage au format WebP.");
}

TEST(ImageProcessingError, saysWhatFailedInFrench) {
  EXPECT_EQ(ImageProcessingError::decodingFailed().localizedDescription(),
            "Impossible de décoder l'image source.");
  EXPECT_EQ(ImageProcessingError::contextCreationFailed().localizedDescription(),
            "Impossible de créer le contexte de rendu.");
}

}  // namespace
}  // namespace orvane
