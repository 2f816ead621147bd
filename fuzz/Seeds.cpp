// Draws the files that fuzzing starts from, small ones of every kind:  orvane-fuzz-seeds FOLDER
// Each target has a folder of its own in it.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "profiles/ExportProfileJSON.h"
#include "support/AVIFBuilder.h"
#include "support/BoxBuilder.h"
#include "support/HEICBuilder.h"
#include "support/JPEGBuilder.h"
#include "support/JXLBuilder.h"
#include "support/PNGBuilder.h"
#include "support/TestImages.h"
#include "support/TestProfiles.h"
#include "support/WebPBuilder.h"

namespace orvane::fuzz {
namespace {

/// The seeds of one target, as files with numbers for names.
class SeedFolder {
 public:
  explicit SeedFolder(std::filesystem::path path) : path_(std::move(path)) {
    std::filesystem::create_directories(path_);
  }

  void add(ByteView seed) {
    std::ofstream file(path_ / std::to_string(count_++), std::ios::binary);
    file.write(reinterpret_cast<const char*>(seed.data()), std::ssize(seed));
    if (!file.flush()) throw std::runtime_error("a seed cannot be written");
  }

  void add(const std::string& seed) { add(test::view(seed)); }

 private:
  std::filesystem::path path_;
  int count_ = 0;
};

// MARK: Pictures

constexpr std::size_t width = 20;
constexpr std::size_t height = 12;

Image colors() { return test::gradientImage(width, height); }
Image noise() { return test::noisyImage(width, height); }
Image translucent() { return test::alphaGradientImage(width, height); }

Image drawn(ChannelLayout layout, AlphaKind alpha, int bitsPerComponent,
            const ColorSpacePtr& colorSpace) {
  return test::drawImage(width, height, layout, alpha, bitsPerComponent, colorSpace,
                         [](std::size_t x, std::size_t y) -> test::Pixel {
                           const auto shade = static_cast<std::uint16_t>(x * y);
                           return {shade, static_cast<std::uint16_t>(x * 9), shade, 200};
                         });
}

Image gray() {
  return drawn(ChannelLayout::gray, AlphaKind::none, 8,
               ColorSpace::standard(ColorSpace::Model::gray));
}
Image deep() { return drawn(ChannelLayout::rgba, AlphaKind::straight, 16, ColorSpace::sRGB()); }

// MARK: PNG

test::PNGRecipe pngRecipe(std::uint8_t colorType, std::uint8_t bitDepth) {
  test::PNGRecipe recipe{
      .width = width, .height = height, .colorType = colorType, .bitDepth = bitDepth};
  const auto mask = static_cast<std::uint16_t>((1U << bitDepth) - 1);
  recipe.pixelAt = [mask](std::size_t x, std::size_t y) -> test::Pixel {
    const auto sample = static_cast<std::uint16_t>((x + y) & mask);
    return {sample, static_cast<std::uint16_t>(x & mask), sample, mask};
  };
  if (colorType == test::paletteType) {
    recipe.beforeData.push_back({"PLTE", Bytes(std::size_t{3} << bitDepth, 0x7F)});
    recipe.beforeData.push_back({"tRNS", {0, 0x80}});
  }
  return recipe;
}

void addPNG(SeedFolder seeds) {
  for (const std::uint8_t depth : {1, 2, 4, 8, 16}) {
    seeds.add(test::buildPNG(pngRecipe(test::grayType, depth)));
  }
  for (const std::uint8_t depth : {1, 2, 4, 8}) {
    seeds.add(test::buildPNG(pngRecipe(test::paletteType, depth)));
  }
  for (const std::uint8_t colorType : {test::rgbType, test::grayAlphaType, test::rgbaType}) {
    for (const std::uint8_t depth : {8, 16}) seeds.add(test::buildPNG(pngRecipe(colorType, depth)));
  }
  const auto addWith = [&](const std::vector<test::PNGChunk>& chunks) {
    auto recipe = pngRecipe(test::rgbType, 8);
    recipe.beforeData = chunks;
    seeds.add(test::buildPNG(recipe));
  };
  addWith({{"tRNS", {0, 1, 0, 2, 0, 3}}});
  addWith({{"cICP", {9, 16, 0, 1}}, {"acTL", test::pngIntegers({2, 0})}});
  addWith({{"gAMA", test::pngIntegers({100'000})},
           {"cHRM",
            test::pngIntegers({31'270, 32'900, 68'000, 32'000, 26'500, 69'000, 15'000, 6'000})}});
  addWith({{"sRGB", {0}}, {"eXIf", test::exifBlock(6)}});
  for (const Bytes& profile : {test::adobeRGBProfile(), test::tabledLinearProfile()}) {
    addWith({test::profileChunk(profile)});
  }
  auto interlaced = pngRecipe(test::grayAlphaType, 16);
  interlaced.isInterlaced = true;
  interlaced.beforeData = {test::profileChunk(test::grayLightnessProfile())};
  seeds.add(test::buildPNG(interlaced));
}

// MARK: JPEG

void addJPEG(SeedFolder seeds) {
  seeds.add(test::buildJPEG(colors()));
  seeds.add(test::buildJPEG(noise(), {.horizontalSampling = 2, .verticalSampling = 2}));
  seeds.add(test::buildJPEG(noise(), {.horizontalSampling = 2, .isProgressive = true}));
  seeds.add(test::buildJPEG(noise(), {.isArithmetic = true, .restartInterval = 2}));
  seeds.add(test::buildJPEG(noise(), {.isProgressive = true, .isArithmetic = true}));
  seeds.add(test::buildJPEG(colors(), {.stored = JCS_RGB, .restartInterval = 1}));
  seeds.add(test::buildJPEG(gray(), {.stored = JCS_GRAYSCALE, .scans = test::manyScans(20)}));
  const Image inks =
      drawn(ChannelLayout::cmyk, AlphaKind::none, 8, ColorSpace::standard(ColorSpace::Model::cmyk));
  seeds.add(test::buildJPEG(inks, {.stored = JCS_CMYK}));
  seeds.add(test::buildJPEG(inks, {.stored = JCS_YCCK, .verticalSampling = 2}));
  seeds.add(test::buildJPEG(colors(), {.segments = {test::exifSegment(5)}}));
  seeds.add(test::buildJPEG(colors(),
                            {.segments = test::profileSegments(test::displayP3Profile(), 200)}));
}

// MARK: WebP

void addWebP(SeedFolder seeds) {
  using test::WebPCoding;
  for (const WebPCoding coding : {WebPCoding::lossy, WebPCoding::lossless}) {
    for (const Image& image : {colors(), noise(), translucent()}) {
      seeds.add(test::encodeWebP(image, coding));
    }
  }
  const Bytes still = test::encodeWebP(colors(), WebPCoding::lossless);
  seeds.add(test::withUnusedAlpha(test::encodeWebP(translucent(), WebPCoding::lossless)));
  seeds.add(test::withMetadata(still, {.icc = test::adobeRGBProfile(),
                                       .exif = test::exifBlock(8, test::ByteOrder::little)}));
  const Bytes lossy = test::encodeWebP(translucent(), WebPCoding::lossy);
  seeds.add(test::animateWebP(32, 24, {{still, 2, 4}, {lossy, 0, 0}}));
}

// MARK: HEIC and AVIF

void addIdentities(SeedFolder& seeds, const Bytes& still) {
  const Bytes turned = test::withIdentity(still, 100, {test::irot(1), test::imir(1)});
  seeds.add(turned);
  seeds.add(test::withIdentity(turned, 101, {test::clap(8, 8), test::ispe(8, 8)}));
}

/// libheif makes smaller stills a grid.
constexpr std::uint16_t tileSide = 64;

/// Two stills as the tiles of a grid, and one as the alpha or the thumbnail of the other.
void addCombinations(SeedFolder& seeds, const Bytes& stills) {
  using test::reference;
  const std::uint32_t one = test::primaryItem(stills), other = one + 1;
  seeds.add(test::withItems(stills, {.added = {{100,
                                                "grid",
                                                {test::ispe(2 * tileSide, tileSide)},
                                                test::gridData(2, 1, 2 * tileSide, tileSide)}},
                                     .references = {reference("dimg", 100, {one, other})},
                                     .primary = 100}));
  const std::string isAlpha =
      test::fullBox("auxC", 0, std::string("urn:mpeg:mpegB:cicp:systems:auxiliary:alpha") + '\0');
  const test::ItemChanges::Item grid{100,
                                     "grid",
                                     {test::ispe(tileSide, tileSide), isAlpha},
                                     test::gridData(1, 1, tileSide, tileSide)};
  seeds.add(test::withItems(
      stills, {.added = {grid},
               .references = {reference("dimg", 100, {other}), reference("auxl", 100, {one})}}));
  seeds.add(test::withItems(stills, {.references = {reference("thmb", other, {one})}}));
}

void addHEIC(SeedFolder seeds) {
  if (!test::canBuildHEIC()) return;
  constexpr auto bt601 = heif_matrix_coefficients_ITU_R_BT_601_6;
  const Bytes still =
      test::buildHEIC(noise(), {.chroma = heif_chroma_420, .matrix = bt601, .isLossless = false});
  seeds.add(still);
  seeds.add(test::buildHEIC(colors()));
  seeds.add(test::buildHEIC(deep(), {.depth = 10, .chroma = heif_chroma_422, .matrix = bt601}));
  seeds.add(test::buildHEIC(deep(), {.depth = 12}));
  seeds.add(test::buildHEIC(translucent(), {.icc = test::displayP3Profile()}));
  seeds.add(test::buildHEIC(colors(), {.isMonochrome = true, .icc = test::grayGamma22Profile()}));
  seeds.add(
      test::buildHEIC(colors(), {.orientation = heif_orientation_rotate_90_cw_then_flip_vertically,
                                 .exif = test::exifBlock(7)}));
  addIdentities(seeds, still);
  const Image tile = test::gradientImage(tileSide, tileSide);
  addCombinations(seeds, test::buildHEIC({tile, tile}));
}

void addAVIF(SeedFolder seeds) {
  const Bytes still = test::buildAVIF(colors());
  seeds.add(still);
  seeds.add(test::buildAVIF(noise(), {.format = AVIF_PIXEL_FORMAT_YUV420,
                                      .range = AVIF_RANGE_LIMITED,
                                      .matrix = AVIF_MATRIX_COEFFICIENTS_BT601}));
  seeds.add(test::buildAVIF(
      deep(),
      {.depth = 10, .format = AVIF_PIXEL_FORMAT_YUV422, .matrix = AVIF_MATRIX_COEFFICIENTS_BT709}));
  seeds.add(test::buildAVIF(deep(), {.depth = 12}));
  seeds.add(
      test::buildAVIF(translucent(), {.icc = test::adobeRGBProfile(), .isPremultiplied = true}));
  seeds.add(test::buildAVIF(colors(), {.format = AVIF_PIXEL_FORMAT_YUV400,
                                       .matrix = AVIF_MATRIX_COEFFICIENTS_BT601,
                                       .icc = test::grayGamma22Profile()}));
  seeds.add(test::buildAVIF(colors(), {.quarterTurns = 1,
                                       .mirrorAxis = 1,
                                       .crop = avifCleanApertureBox{8, 1, 8, 1, 1, 1, 0, 1},
                                       .exif = test::exifBlock(3)}));
  const Image tile = test::gradientImage(tileSide, tileSide);
  seeds.add(test::buildAVIFGrid({tile, tile}, 2));
  seeds.add(test::buildAVIFSequence({colors(), noise()}));
  addIdentities(seeds, still);
}

// MARK: JPEG XL

void addJXL(SeedFolder seeds) {
  seeds.add(test::buildJXL(colors()));
  seeds.add(test::buildJXL(noise(), {.xybDistance = 1.0F}));
  seeds.add(test::buildJXL(translucent(), {.xybDistance = 3.0F, .effort = 7}));
  seeds.add(test::buildJXL(gray(), {.inContainer = true}));
  seeds.add(test::buildJXL(deep(), {.orientation = JXL_ORIENT_TRANSPOSE}));
  seeds.add(
      test::buildJXL(colors(), {.xybDistance = 1.0F, .bitsPerSample = 16, .exponentBits = 5}));
  seeds.add(test::buildJXL(colors(), {.xybDistance = 1.0F, .icc = test::adobeRGBProfile()}));
  seeds.add(test::buildJXL(colors(), {.icc = test::linearAdobeRGBProfile()}));
  seeds.add(test::buildJXL(colors(), {.extraChannel = JXL_CHANNEL_DEPTH}));
  const std::vector<Image> frames{colors(), noise()};
  seeds.add(test::buildJXL(frames, {.border = 3}));
  seeds.add(test::buildJXLFromJPEG(test::buildJPEG(noise(), {.isProgressive = true}), 5));
}

// MARK: Text

void addExif(SeedFolder seeds) {
  for (const auto order : {test::ByteOrder::little, test::ByteOrder::big}) {
    for (const int type : {3, 4}) seeds.add(test::exifBlock(6, order, type));
  }
  seeds.add(test::exifSegment(8).data);
}

void addProfiles(SeedFolder seeds) {
  ExportProfile profile{.id = *UUID::fromString("01234567-89AB-CDEF-0123-456789ABCDEF"),
                        .name = "Déjà \"vu\"/\n",
                        .format = ImageFormat::avif,
                        .quality = 62.5};
  std::vector<ExportProfile> profiles{profile};
  profile.destinationFolderURL = "file:///a%20b/";
  profile.isDefault = true;
  profiles.push_back(profile);
  seeds.add(*ExportProfileJSON::encode({}));
  seeds.add(*ExportProfileJSON::encode(profiles));
}

void addOptions(SeedFolder seeds) {
  using std::string_literals::operator""s;
  seeds.add("a.png\0--output\0out\0--quality\00072.5\0--format\0JPEG\0--jobs\0004\0--json"s);
  seeds.add("--profile\0web\0a.jpg\0-b\0--format\0jxl"s);
  seeds.add("--quality\0nan\0--create-profile"s);
}

void addAll(const std::filesystem::path& folder) {
  addPNG(SeedFolder(folder / "png"));
  addJPEG(SeedFolder(folder / "jpeg"));
  addWebP(SeedFolder(folder / "webp"));
  addHEIC(SeedFolder(folder / "heic"));
  addAVIF(SeedFolder(folder / "avif"));
  addJXL(SeedFolder(folder / "jxl"));
  addExif(SeedFolder(folder / "exif"));
  addProfiles(SeedFolder(folder / "profiles"));
  addOptions(SeedFolder(folder / "options"));
}

}  // namespace
}  // namespace orvane::fuzz

int main(int count, char** arguments) try {
  if (count != 2) throw std::runtime_error("orvane-fuzz-seeds FOLDER");
  orvane::fuzz::addAll(arguments[1]);
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
