#include "pipeline/ImageCompressor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <set>

#include "codecs/ImageSource.h"
#include "codecs/jxl/JXLEncoder.h"
#include "picture/ImageProcessingError.h"
#include "pipeline/ImageDecoder.h"
#include "support/FailingZlib.h"
#include "support/JPEGBuilder.h"
#include "support/JXLBuilder.h"
#include "support/ShortMemory.h"
#include "support/TemporaryFolder.h"
#include "support/TestFiles.h"
#include "support/TestImages.h"
#include "support/TestProfiles.h"
#include "support/WebPBuilder.h"

namespace orvane {
namespace {

using test::jpegFile;
using test::pngFile;
using test::readFile;
using test::TemporaryFolder;
using test::writeFile;

struct ImageCompressorTest : testing::Test {
  TemporaryFolder sources;
  TemporaryFolder outputs;

  ImageCompressionResult compress(const std::string& path, ImageFormat format, double quality,
                                  const std::optional<std::string>& name = std::nullopt) {
    return ImageCompressor::compress(path, FileURL::fromPath(outputs.path().string()), format,
                                     quality, name);
  }
};

TEST_F(ImageCompressorTest, fillsTheResultOfAFileThatWentWell) {
  const std::string path = sources / "drawing.final.png";
  writeFile(path, pngFile(test::noisyImage(80, 60)));
  const ImageCompressionResult result = compress(path, ImageFormat::jpeg, 75);
  EXPECT_EQ(result.path, path);
  EXPECT_EQ(result.error, std::nullopt);
  EXPECT_EQ(result.destination, outputs / "drawing.final.jpg");
  EXPECT_EQ(result.originalSizeBytes, static_cast<std::int64_t>(readFile(path).size()));
  EXPECT_EQ(result.compressedSizeBytes,
            static_cast<std::int64_t>(readFile(*result.destination).size()));
  EXPECT_DOUBLE_EQ(*result.ratio, 1 - static_cast<double>(*result.compressedSizeBytes) /
                                          static_cast<double>(result.originalSizeBytes));
  EXPECT_EQ(outputs.names(), std::vector<std::string>{"drawing.final.jpg"});
}

TEST_F(ImageCompressorTest, namesTheOutputAfterTheFormatOfEachKind) {
  const std::string path = sources / "a.png";
  writeFile(path, pngFile(test::gradientImage(16, 16)));
  for (const ImageFormat format : ImageFormat::allCases) compress(path, format, 75);
  for (const std::string& name : outputs.names()) EXPECT_EQ(name.substr(0, 2), "a.");
  EXPECT_EQ(outputs.names(),
            (std::vector<std::string>{"a.avif", "a.heic", "a.jpg", "a.jxl", "a.png", "a.webp"}));
}

TEST_F(ImageCompressorTest, usesAGivenNameAsItIs) {
  const std::string path = sources / "a.png";
  writeFile(path, pngFile(test::gradientImage(16, 16)));
  const auto result = compress(path, ImageFormat::webp, 75, "picture.jpeg");
  EXPECT_EQ(result.destination, outputs / "picture.jpeg");
  EXPECT_EQ(ImageDecoder::decodeImageSource(readFile(outputs / "picture.jpeg")).format,
            ImageFormat::webp);
}

TEST_F(ImageCompressorTest, replacesAnOutputOfThatName) {
  const std::string path = sources / "a.png";
  writeFile(path, pngFile(test::gradientImage(16, 16)));
  writeFile(outputs / "a.jpg", "something older and longer than it will be");
  compress(path, ImageFormat::jpeg, 75);
  EXPECT_EQ(ImageDecoder::decodeImageSource(readFile(outputs / "a.jpg")).image.width, 16u);
}

TEST_F(ImageCompressorTest, reportsAMissingSourceInTheSystemsWords) {
  const auto result = compress(sources / "none.png", ImageFormat::png, 75);
  EXPECT_EQ(result.originalSizeBytes, 0);
  EXPECT_EQ(result.error, std::strerror(ENOENT));
  EXPECT_EQ(result.compressedSizeBytes, std::nullopt);
  EXPECT_EQ(result.ratio, std::nullopt);
  EXPECT_EQ(result.destination, std::nullopt);
  EXPECT_TRUE(outputs.names().empty());
}

TEST_F(ImageCompressorTest, reportsAFileThatIsNoPicture) {
  const std::string path = sources / "text.png";
  writeFile(path, "GIF89a is how another format begins");
  const auto result = compress(path, ImageFormat::png, 75);
  EXPECT_EQ(result.originalSizeBytes, 35);
  EXPECT_EQ(result.error, ImageProcessingError::decodingFailed().localizedDescription());
  EXPECT_TRUE(outputs.names().empty());
}

TEST_F(ImageCompressorTest, reportsAnOutputThatCannotBeWritten) {
  const std::string path = sources / "a.png";
  writeFile(path, pngFile(test::gradientImage(16, 16)));
  const auto result = ImageCompressor::compress(path, FileURL::fromPath(sources / "a.png"),
                                                ImageFormat::jpeg, 75, "a.jpg");
  EXPECT_EQ(result.error, path + " : " + std::strerror(ENOTDIR));
  EXPECT_EQ(result.originalSizeBytes, static_cast<std::int64_t>(readFile(path).size()));
  EXPECT_EQ(sources.names(), std::vector<std::string>{"a.png"});
}

TEST_F(ImageCompressorTest, namesTheFolderThatIsNotThere) {
  const std::string path = sources / "a.png";
  writeFile(path, pngFile(test::gradientImage(16, 16)));
  const auto result = ImageCompressor::compress(path, FileURL::fromPath(outputs / "missing"),
                                                ImageFormat::jpeg, 75, "a.jpg");
  EXPECT_EQ(result.error, outputs / "missing : " + std::strerror(ENOENT));
}

TEST_F(ImageCompressorTest, namesAFolderThatHasTheNameOfTheOutput) {
  const std::string path = sources / "a.png";
  writeFile(path, pngFile(test::gradientImage(16, 16)));
  std::filesystem::create_directory(outputs / "a.jpg");
  EXPECT_EQ(compress(path, ImageFormat::jpeg, 75).error,
            outputs / "a.jpg : " + std::strerror(EISDIR));
  EXPECT_EQ(outputs.names(), std::vector<std::string>{"a.jpg"});
}

TEST_F(ImageCompressorTest, reportsAPNGThatZlibDoesNotCompress) {
  const std::string path = sources / "a.png";
  writeFile(path, pngFile(test::gradientImage(16, 16)));
  const test::FailingZlib zlib(2);  // for the palette and for truecolour
  EXPECT_EQ(compress(path, ImageFormat::png, 75).error, "Échec de l'encodage au format PNG.");
  EXPECT_TRUE(outputs.names().empty());
}

TEST_F(ImageCompressorTest, writesAnOutputThatGrewAndSaysSo) {
  const std::string path = sources / "a.jpg";
  writeFile(path, jpegFile(test::noisyImage(64, 64)));
  const auto result = compress(path, ImageFormat::png, 100);
  ASSERT_EQ(result.error, std::nullopt);
  EXPECT_LT(*result.ratio, 0);
  EXPECT_EQ(outputs.names(), std::vector<std::string>{"a.png"});
}

/// Whether there is a box of JPEG reconstruction data (ISO/IEC 18181-2).
bool rebuildsAJPEG(const Bytes& jxl) {
  constexpr std::string_view box = "jbrd";
  return std::search(jxl.begin(), jxl.end(), box.begin(), box.end()) != jxl.end();
}

TEST_F(ImageCompressorTest, repacksAJPEGAsJPEGXLFromQuality90On) {
  const std::string path = sources / "a.jpg";
  writeFile(path, jpegFile(test::noisyImage(64, 64)));
  const auto repacked = [&](double quality) {
    compress(path, ImageFormat::jxl, quality);
    return rebuildsAJPEG(readFile(outputs / "a.jxl"));
  };
  EXPECT_TRUE(repacked(90));
  EXPECT_TRUE(repacked(100));
  EXPECT_FALSE(repacked(89.99));
  EXPECT_FALSE(repacked(std::nan("")));
}

TEST_F(ImageCompressorTest, repacksAJPEGWithTheEffortOfItsSize) {
  const std::string path = sources / "a.jpg";
  const auto expectEffort = [&](std::size_t width, std::size_t height, int effort) {
    const Bytes jpeg = test::buildJPEG(test::gradientImage(width, height));
    writeFile(path, jpeg);
    ASSERT_EQ(compress(path, ImageFormat::jxl, 90).error, std::nullopt);
    EXPECT_TRUE(readFile(outputs / "a.jxl") == test::buildJXLFromJPEG(jpeg, effort)) << effort;
  };
  expectEffort(300, 200, 7);
  expectEffort(4'000, 3'001, 5);
}

TEST_F(ImageCompressorTest, keepsARepackedJPEGAlthoughItsPixelsWouldBeSmaller) {
  const std::string path = sources / "a.jpg";
  const Image flat = test::drawImage(64, 64, ChannelLayout::rgba, AlphaKind::none, 8,
                                     ColorSpace::sRGB(), [](std::size_t, std::size_t) {
                                       return test::Pixel{40, 90, 200, 255};
                                     });
  const Bytes jpeg = jpegFile(flat);
  writeFile(path, jpeg);
  compress(path, ImageFormat::jxl, 95);
  const Bytes output = readFile(outputs / "a.jxl");
  EXPECT_EQ(test::rebuildJPEG(output), jpeg);
  const EncodingPlan lossless{.mode = EncodingPlan::Lossless{}};
  EXPECT_LT(JXLEncoder::encode(RGBABuffer(flat), false, lossless).size(), output.size());
}

TEST_F(ImageCompressorTest, encodesThePixelsOfOtherSourcesAsJPEGXL) {
  const std::string path = sources / "a.png";
  writeFile(path, pngFile(test::noisyImage(64, 64)));
  compress(path, ImageFormat::jxl, 95);
  EXPECT_FALSE(rebuildsAJPEG(readFile(outputs / "a.jxl")));
}

TEST_F(ImageCompressorTest, encodesThePixelsOfAJPEGThatCannotBeRepacked) {
  const std::string path = sources / "a.jpg";
  const Image ink = test::drawImage(
      48, 32, ChannelLayout::cmyk, AlphaKind::none, 8, nullptr,
      [](std::size_t x, std::size_t y) -> test::Pixel {
        return {static_cast<std::uint16_t>(x * 5), static_cast<std::uint16_t>(y * 7), 30, 0};
      });
  writeFile(path, test::buildJPEG(ink, {.stored = JCS_CMYK}));
  const auto result = compress(path, ImageFormat::jxl, 95);
  ASSERT_EQ(result.error, std::nullopt);
  const Bytes file = readFile(outputs / "a.jxl");
  EXPECT_FALSE(rebuildsAJPEG(file));
  EXPECT_EQ(ImageSource::create(file)->image().width, 48u);
}

TEST_F(ImageCompressorTest, keepsTheSmallerOfPaletteAndTruecolour) {
  // Two colours: the palette is smaller than truecolour at any quality.
  const std::string path = sources / "a.png";
  writeFile(path, pngFile(test::drawImage(64, 64, ChannelLayout::rgba, AlphaKind::none, 8,
                                          ColorSpace::sRGB(), [](std::size_t x, std::size_t y) {
                                            return (x * x + y * 7) % 5 < 2
                                                       ? test::Pixel{250, 10, 20, 255}
                                                       : test::Pixel{10, 90, 200, 255};
                                          })));
  const auto colorType = [&](double quality) {
    compress(path, ImageFormat::png, quality);
    return int{readFile(outputs / "a.png").at(25)};
  };
  EXPECT_EQ(colorType(75), 3);
  EXPECT_EQ(colorType(100), 3);
}

TEST_F(ImageCompressorTest, makesAStillOfAnAnimation) {
  const std::string path = sources / "a.webp";
  const auto frame = [](const Image& image) {
    return test::WebPFrame{test::encodeWebP(image, test::WebPCoding::lossless)};
  };
  writeFile(path,
            test::animateWebP(
                24, 16, {frame(test::gradientImage(24, 16)), frame(test::noisyImage(24, 16))}));
  ASSERT_EQ(ImageSource::create(readFile(path))->frameCount(), 2u);
  for (const ImageFormat format : ImageFormat::allCases) {
    const auto result = compress(path, format, 75);
    ASSERT_EQ(result.error, std::nullopt) << format.rawValue();
    const Bytes still = readFile(*result.destination);
    EXPECT_EQ(ImageSource::create(still)->frameCount(), 1u) << format.rawValue();
  }
}

constexpr std::size_t mebibyte = std::size_t{1} << 20;

struct ImageCompressorDeathTest : ImageCompressorTest {
  void SetUp() override {
    if (test::endsWithoutMemory()) GTEST_SKIP() << "sanitizers end the process";
  }

  /// Expects that a process with `bytes` of memory left lives, and that its result is right.
  template <typename IsRight>
  void expectInShortMemory(std::size_t bytes, const std::string& path, ImageFormat format,
                           const IsRight& isRight) {
    const auto compressInShortMemory = [&] {
      test::leaveMemory(bytes);
      std::_Exit(isRight(compress(path, format, 75)) ? 0 : 1);
    };
    EXPECT_EXIT(compressInShortMemory(), testing::ExitedWithCode(0), "") << bytes << " bytes";
  }

  /// Expects that such a process compresses the file or reports one of the known errors.
  void expectLifeInShortMemory(std::size_t bytes, const std::string& path, ImageFormat format) {
    const std::set<std::string> texts{
        std::strerror(ENOMEM), ImageProcessingError::decodingFailed().localizedDescription(),
        ImageProcessingError::contextCreationFailed().localizedDescription(),
        ImageProcessingError::encodingFailed(format).localizedDescription()};
    expectInShortMemory(bytes, path, format, [&](const ImageCompressionResult& result) {
      return !result.error || texts.contains(*result.error);
    });
  }
};

TEST_F(ImageCompressorDeathTest, writesATruecolourPNGWhereThereIsNoMemoryForAPalette) {
  const std::string path = sources / "a.png";
  writeFile(path, pngFile(test::noisyImage(300, 200)));
  const auto expectColorType = [&](std::size_t bytes, int colorType) {
    expectInShortMemory(bytes, path, ImageFormat::png, [&](const ImageCompressionResult& result) {
      return !result.error && readFile(outputs / "a.png").at(25) == colorType;
    });
  };
  expectColorType(3 * mebibyte, 2);
  expectColorType(64 * mebibyte, 3);
  for (std::size_t bytes = 0; bytes < 8 * mebibyte; bytes += mebibyte / 4) {
    expectLifeInShortMemory(bytes, path, ImageFormat::png);
  }
}

TEST_F(ImageCompressorDeathTest, cannotDecodeAJPEGXLThatThereIsNoMemoryFor) {
  const std::string path = sources / "a.jxl";
  const auto expectError = [&](std::size_t bytes, const std::optional<std::string>& error) {
    expectInShortMemory(bytes, path, ImageFormat::webp, [&](const ImageCompressionResult& result) {
      return result.error == error;
    });
  };
  for (const test::JXLOptions& options :
       {test::JXLOptions{}, test::JXLOptions{.xybDistance = 1},
        test::JXLOptions{.xybDistance = 1, .icc = test::adobeRGBProfile()}}) {
    writeFile(path, test::buildJXL(test::alphaGradientImage(300, 200), options));
    expectError(8 * mebibyte, ImageProcessingError::decodingFailed().localizedDescription());
    expectError(64 * mebibyte, std::nullopt);
    for (std::size_t bytes = 0; bytes < 20 * mebibyte; bytes += mebibyte) {
      expectLifeInShortMemory(bytes, path, ImageFormat::webp);
    }
  }
}

TEST_F(ImageCompressorDeathTest, cannotEncodeAHEICThatThereIsNoMemoryFor) {
  const std::string path = sources / "a.png";
  writeFile(path, pngFile(test::noisyImage(300, 200)));
  expectInShortMemory(
      9 * mebibyte, path, ImageFormat::heic, [](const ImageCompressionResult& result) {
        return result.error ==
               ImageProcessingError::encodingFailed(ImageFormat::heic).localizedDescription();
      });
  expectInShortMemory(160 * mebibyte, path, ImageFormat::heic,
                      [](const ImageCompressionResult& result) { return !result.error; });
  for (std::size_t bytes = 0; bytes < 32 * mebibyte; bytes += mebibyte) {
    expectLifeInShortMemory(bytes, path, ImageFormat::heic);
  }
  // glibc reserves 64 MiB for a thread that allocates.
  for (std::size_t bytes = 60 * mebibyte; bytes < 100 * mebibyte; bytes += 2 * mebibyte) {
    expectLifeInShortMemory(bytes, path, ImageFormat::heic);
  }
}

TEST_F(ImageCompressorTest, isEmptyHandedAboutTheSizeOfNothing) {
  EXPECT_EQ(ImageCompressor::fileSize(sources / "none"), 0);
  writeFile(sources / "three", "abc");
  EXPECT_EQ(ImageCompressor::fileSize(sources / "three"), 3);
}

}  // namespace
}  // namespace orvane
