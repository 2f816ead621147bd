// One picture, written in every format and read back by our own readers and by the format's own
// tool, shows the same colours.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <tuple>

#include "codecs/png/PNGQuantEncoder.h"
#include "pipeline/ImageCompressor.h"
#include "pipeline/ImageDecoder.h"
#include "platform/graphics/RowRenderer.h"
#include "support/TemporaryFolder.h"
#include "support/TestImages.h"
#include "support/TestProfiles.h"

namespace orvane {
namespace {

using test::Pixel;

constexpr double quality = 95;
constexpr double tolerance = 2;  // of 255, on average

struct Size {
  std::size_t width, height;
};

enum class Space { sRGB, displayP3 };

ColorSpacePtr colorSpace(Space space) {
  return space == Space::sRGB
             ? ColorSpace::sRGB()
             : ColorSpace::fromICC(test::displayP3Profile(), ColorSpace::Model::rgb);
}

/// Patches where there is room for them, one colour where there is not.
Image opaquePicture(Size size, const ColorSpacePtr& space) {
  if (size.width > 100) return test::patchImage(size.width, size.height, space);
  return test::drawImage(size.width, size.height, ChannelLayout::rgba, AlphaKind::none, 8, space,
                         [](std::size_t, std::size_t) {
                           return Pixel{180, 90, 60, 255};
                         });
}

/// The same, its left third half transparent.
Image translucentPicture(Size size, const ColorSpacePtr& space) {
  const Image opaque = opaquePicture(size, space);
  return test::drawImage(size.width, size.height, ChannelLayout::rgba, AlphaKind::straight, 8,
                         space, [&](std::size_t x, std::size_t y) {
                           Pixel pixel = test::pixelAt(opaque, x, y);
                           if (x * 3 < size.width) pixel[3] = 128;
                           return pixel;
                         });
}

/// Whether a pixel lies where another patch is near and chroma of half resolution may mix.
bool isNearAnEdge(const Image& image, std::size_t x, std::size_t y) {
  if (image.width <= 100) return false;
  const auto near = [](std::size_t at, std::size_t size, std::size_t parts) {
    for (std::size_t part = 1; part < parts; ++part) {
      const auto edge = static_cast<double>(size * part) / static_cast<double>(parts);
      if (std::abs(static_cast<double>(at) - edge) < 9) return true;
    }
    return false;
  };
  return near(x, image.width, 3) || near(y, image.height, 2);
}

double patchDifference(const Image& left, const Image& right) {
  double sum = 0;
  std::size_t count = 0;
  for (std::size_t y = 0; y < left.height; ++y) {
    for (std::size_t x = 0; x < left.width; ++x) {
      if (isNearAnEdge(left, x, y)) continue;
      const Pixel a = test::pixelAt(left, x, y), b = test::pixelAt(right, x, y);
      for (std::size_t c = 0; c < 4; ++c, ++count) sum += std::abs(int{a[c]} - int{b[c]});
    }
  }
  return sum / static_cast<double>(count);
}

/// Where the reading side names no space of its own, its numbers are taken to be in the source's.
void expectSameColours(const Image& read, const Image& source) {
  ASSERT_EQ(read.width, source.width);
  ASSERT_EQ(read.height, source.height);
  Image named = read;
  if (named.colorSpace->isSRGB()) named.colorSpace = source.colorSpace;
  const ColorSpacePtr sRGB = ColorSpace::sRGB();
  EXPECT_LE(patchDifference(rendered(named, sRGB, 8), rendered(source, sRGB, 8)), tolerance);
}

Image decoded(const std::string& path) {
  return ImageDecoder::decodeImageSource(test::readFile(path)).image;
}

/// The format's own decoder, writing PNG (PPM for JPEG).
std::optional<std::string> toolFor(ImageFormat format) {
  const auto installed = [](const std::string& tool) {
    return std::system(("command -v " + tool + " >/dev/null").c_str()) == 0;
  };
  switch (format) {
    case ImageFormat::jpeg:
      return installed("djpeg") ? std::optional("djpeg") : std::nullopt;
    case ImageFormat::webp:
      return installed("dwebp") ? std::optional("dwebp") : std::nullopt;
    case ImageFormat::jxl:
      return installed("djxl") ? std::optional("djxl") : std::nullopt;
    case ImageFormat::avif:
      return installed("avifdec") ? std::optional("avifdec") : std::nullopt;
    case ImageFormat::heic:
      if (installed("heif-dec")) return "heif-dec";
      return installed("heif-convert") ? std::optional("heif-convert") : std::nullopt;
    case ImageFormat::png:
      break;
  }
  return std::nullopt;
}

/// A binary PPM (Netpbm "P6", 8 bits) as a picture in sRGB.
Image readPPM(const std::string& path) {
  const Bytes file = test::readFile(path);
  unsigned width = 0, height = 0;
  int headerBytes = 0;
  const std::string header(
      file.begin(),
      file.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(file.size(), 64)));
  EXPECT_EQ(std::sscanf(header.c_str(), "P6 %u %u 255%n", &width, &height, &headerBytes), 2);
  const std::uint8_t* pixels = file.data() + headerBytes + 1;
  return test::drawImage(width, height, ChannelLayout::rgb, AlphaKind::none, 8, ColorSpace::sRGB(),
                         [&](std::size_t x, std::size_t y) {
                           const std::uint8_t* at = pixels + (y * width + x) * 3;
                           return Pixel{at[0], at[1], at[2]};
                         });
}

Image decodedByTool(const std::string& tool, const std::string& path) {
  const bool isJPEG = tool == "djpeg";
  const std::string output = path + (isJPEG ? ".ppm" : ".png");
  const std::string arguments = isJPEG            ? " -rgb -pnm -outfile " + output + " " + path
                                : tool == "dwebp" ? " -quiet " + path + " -o " + output
                                                  : " " + path + " " + output;
  EXPECT_EQ(std::system((tool + arguments + " >/dev/null 2>&1").c_str()), 0) << tool + arguments;
  return isJPEG ? readPPM(output) : decoded(output);
}

using Case = std::tuple<ImageFormat::Case, Space, Size>;

class RoundTrip : public testing::TestWithParam<Case> {
 protected:
  ImageFormat format() const { return std::get<0>(GetParam()); }
  ColorSpacePtr space() const { return colorSpace(std::get<1>(GetParam())); }
  Size size() const { return std::get<2>(GetParam()); }

  /// `image` as a PNG file, compressed to the format; the path of the result.
  std::string compressed(const Image& image) {
    const std::string source = folder_ / "source.png";
    test::writeFile(source, PNGQuantEncoder::encodeLossless(RGBABuffer(image),
                                                            {.mode = EncodingPlan::Lossless{}}));
    const auto result =
        ImageCompressor::compress(source, FileURL::fromPath(folder_ / "."), format(), quality,
                                  "result." + std::string(format().fileExtension()));
    EXPECT_EQ(result.error, std::nullopt);
    return result.destination.value_or("");
  }

 private:
  test::TemporaryFolder folder_;
};

TEST_P(RoundTrip, showsTheSameColoursToOurOwnReader) {
  const Image source = opaquePicture(size(), space());
  const Image read = decoded(compressed(source));
  EXPECT_EQ(read.colorSpace->isSRGB(), source.colorSpace->isSRGB());
  EXPECT_EQ(read.colorSpace->codePoints(), source.colorSpace->codePoints());
  expectSameColours(read, source);
}

using RoundTripByTool = RoundTrip;

TEST_P(RoundTripByTool, showsTheSameColoursToTheFormatsOwnTool) {
  const auto tool = toolFor(format());
  if (!tool) GTEST_SKIP() << "the format's own tool is not installed";
  const Image source = opaquePicture(size(), space());
  expectSameColours(decodedByTool(*tool, compressed(source)), source);
}

using RoundTripOfAlpha = RoundTrip;

TEST_P(RoundTripOfAlpha, keepsTransparency) {
  const Image source = translucentPicture(size(), space());
  const std::string path = compressed(source);
  expectSameColours(decoded(path), source);
  if (const auto tool = toolFor(format())) expectSameColours(decodedByTool(*tool, path), source);
}

std::string caseName(const testing::TestParamInfo<Case>& info) {
  const auto [format, space, size] = info.param;
  return std::string(ImageFormat(format).rawValue()) + (space == Space::sRGB ? "SRGB" : "P3") +
         std::to_string(size.width) + "x" + std::to_string(size.height);
}

/// Every format but `without`, in both spaces and all sizes.
auto cases(std::optional<ImageFormat> without = std::nullopt) {
  std::vector<ImageFormat::Case> formats;
  for (const ImageFormat format : ImageFormat::allCases) {
    if (format != without) formats.push_back(format);
  }
  return testing::Combine(testing::ValuesIn(formats),
                          testing::Values(Space::sRGB, Space::displayP3),
                          testing::Values(Size{1, 1}, Size{3, 5}, Size{15, 15}, Size{257, 129}));
}

INSTANTIATE_TEST_SUITE_P(Formats, RoundTrip, cases(), caseName);
INSTANTIATE_TEST_SUITE_P(Formats, RoundTripByTool, cases(ImageFormat::png), caseName);
INSTANTIATE_TEST_SUITE_P(Formats, RoundTripOfAlpha, cases(ImageFormat::jpeg), caseName);

}  // namespace
}  // namespace orvane
