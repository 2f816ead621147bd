#include "library/orvane.h"

#include <gtest/gtest.h>

#include "codecs/ImageSource.h"
#include "pipeline/EncodingStrategy.h"
#include "support/TemporaryFolder.h"
#include "support/TestFiles.h"
#include "support/TestImages.h"

namespace orvane {
namespace {

const Bytes noPicture{'t', 'e', 'x', 't'};

TEST(Library, compressesInMemoryIntoTheBytesThatTheFileGets) {
  const test::TemporaryFolder sources;
  const test::TemporaryFolder outputs;
  const Bytes source = test::pngFile(test::noisyImage(80, 60));
  test::writeFile(sources / "drawing.png", source);
  for (const ImageFormat format : ImageFormat::allCases) {
    const auto result = compressFile(sources / "drawing.png", outputs.path().string(), format, 60);
    ASSERT_EQ(result.error, std::nullopt) << format.rawValue();
    const Bytes output = compress(source, format, 60);
    EXPECT_EQ(output, test::readFile(*result.destination)) << format.rawValue();
    EXPECT_EQ(ImageSource::create(output)->typeIdentifier(), format.typeIdentifier());
  }
}

TEST(Library, saysWhatAPictureIsAndHowItWouldBeEncoded) {
  const Bytes source = test::pngFile(test::noisyImage(80, 60));
  const Analysis analysis = analyze(source, ImageFormat::webp, 60);
  EXPECT_EQ(analysis.format, ImageFormat::png);
  EXPECT_EQ(analysis.characteristics.width, 80);
  EXPECT_EQ(analysis.characteristics.height, 60);
  EXPECT_EQ(analysis.plan, EncodingStrategy::plan(analysis.characteristics, ImageFormat::webp, 60));
}

TEST(Library, throwsASentenceForAFileThatIsNoPicture) {
  EXPECT_THROW(compress(noPicture, ImageFormat::webp, 75), LocalizedError);
  EXPECT_THROW(analyze(noPicture, ImageFormat::webp, 75), LocalizedError);
}

TEST(Library, makesAnErrorOfAFileThatIsNotThere) {
  const test::TemporaryFolder folder;
  const auto result =
      compressFile(folder / "missing.png", folder.path().string(), ImageFormat::webp, 75);
  EXPECT_TRUE(result.error.has_value());
  EXPECT_TRUE(folder.names().empty());
}

}  // namespace
}  // namespace orvane
