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

TEST(Library, compressesABatchIntoTheBytesOfEachFileAlone) {
  const test::TemporaryFolder sources;
  const test::TemporaryFolder outputs;
  const Bytes first = test::pngFile(test::noisyImage(80, 60));
  const Bytes second = test::pngFile(test::noisyImage(60, 80));
  test::writeFile(sources / "drawing.png", first);
  test::writeFile(sources / "drawing.two.png", second);
  const std::vector<std::string> paths{sources / "drawing.png", sources / "missing.png",
                                       sources / "drawing.two.png", sources / "drawing.png"};
  std::vector<ImageCompressionResult> told(paths.size());
  const auto results = compressFiles(
      paths, outputs.path().string(), ImageFormat::webp, 60,
      {.jobs = 2, .onResult = [&](auto index, const auto& result) { told[index] = result; }});
  EXPECT_EQ(results, told);
  EXPECT_EQ(outputs.names(),
            (std::vector<std::string>{"drawing-2.webp", "drawing.two.webp", "drawing.webp"}));
  EXPECT_EQ(test::readFile(outputs / "drawing.webp"), compress(first, ImageFormat::webp, 60));
  EXPECT_EQ(test::readFile(outputs / "drawing.two.webp"), compress(second, ImageFormat::webp, 60));
  EXPECT_EQ(results[0].originalSizeBytes, static_cast<std::int64_t>(first.size()));
  EXPECT_EQ(results[1].path, paths[1]);
  EXPECT_TRUE(results[1].error.has_value());
  EXPECT_EQ(results[3].destination, outputs / "drawing-2.webp");
}

TEST(Library, startsNoFileOfABatchThatIsStopped) {
  const test::TemporaryFolder folder;
  test::writeFile(folder / "drawing.png", test::pngFile(test::noisyImage(80, 60)));
  const auto results =
      compressFiles(std::vector<std::string>(5, folder / "drawing.png"), folder.path().string(),
                    ImageFormat::webp, 75, {.isStopped = [] { return true; }});
  EXPECT_EQ(results.size(), 5u);
  for (const auto& result : results) EXPECT_TRUE(result.error.has_value());
  EXPECT_EQ(folder.names(), std::vector<std::string>{"drawing.png"});
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
