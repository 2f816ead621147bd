#include "codecs/webp/WebPEncoder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <webp/decode.h>
#include <webp/demux.h>

#include <cstdlib>

#include "picture/ImageProcessingError.h"
#include "platform/foundation/Handle.h"
#include "support/ShortMemory.h"
#include "support/TestBuffers.h"
#include "support/TestProfiles.h"

namespace orvane {
namespace {

using Effort = EncodingPlan::Effort;
using Lossless = EncodingPlan::Lossless;
using Lossy = EncodingPlan::Lossy;
using NearLossless = EncodingPlan::NearLossless;

const ImageCharacteristics photo{.contentClass = ContentClass::photo};

// Configuration

/// Every setting of libwebp by its name.
std::vector<std::pair<std::string, double>> settings(const WebPConfig& config) {
  return {{"lossless", config.lossless},
          {"quality", config.quality},
          {"method", config.method},
          {"image_hint", config.image_hint},
          {"target_size", config.target_size},
          {"target_PSNR", config.target_PSNR},
          {"segments", config.segments},
          {"sns_strength", config.sns_strength},
          {"filter_strength", config.filter_strength},
          {"filter_sharpness", config.filter_sharpness},
          {"filter_type", config.filter_type},
          {"autofilter", config.autofilter},
          {"alpha_compression", config.alpha_compression},
          {"alpha_filtering", config.alpha_filtering},
          {"alpha_quality", config.alpha_quality},
          {"pass", config.pass},
          {"show_compressed", config.show_compressed},
          {"preprocessing", config.preprocessing},
          {"partitions", config.partitions},
          {"partition_limit", config.partition_limit},
          {"emulate_jpeg_size", config.emulate_jpeg_size},
          {"thread_level", config.thread_level},
          {"low_memory", config.low_memory},
          {"near_lossless", config.near_lossless},
          {"exact", config.exact},
          {"use_delta_palette", config.use_delta_palette},
          {"use_sharp_yuv", config.use_sharp_yuv},
          {"qmin", config.qmin},
          {"qmax", config.qmax}};
}

WebPConfig preset(WebPPreset name) {
  WebPConfig config{};
  EXPECT_TRUE(WebPConfigPreset(&config, name, 75));
  return config;
}

TEST(WebPEncoder, startsFromThePresetOfTheContent) {
  struct Row {
    ContentClass contentClass;
    bool hasAlpha;
    WebPPreset preset;
  };
  const Row rows[]{
      {ContentClass::flatGraphic, true, WEBP_PRESET_ICON},
      {ContentClass::flatGraphic, false, WEBP_PRESET_TEXT},
      {ContentClass::screenContent, true, WEBP_PRESET_TEXT},
      {ContentClass::screenContent, false, WEBP_PRESET_TEXT},
      {ContentClass::illustration, true, WEBP_PRESET_DRAWING},
      {ContentClass::illustration, false, WEBP_PRESET_DRAWING},
      {ContentClass::photo, true, WEBP_PRESET_PHOTO},
      {ContentClass::photo, false, WEBP_PRESET_PHOTO},
      {ContentClass::detailedPhoto, true, WEBP_PRESET_PHOTO},
      {ContentClass::detailedPhoto, false, WEBP_PRESET_PHOTO},
  };
  for (const Row& row : rows) {
    // The preset follows the characteristics; the buffer's own alpha has no part in it.
    for (const bool bufferHasAlpha : {false, true}) {
      const WebPConfig actual =
          WebPEncoder::configuration({.mode = Lossy{75}, .effort = Effort::fast}, bufferHasAlpha,
                                     {.contentClass = row.contentClass, .hasAlpha = row.hasAlpha});
      WebPConfig expected = preset(row.preset);
      expected.method = 4;
      expected.alpha_quality = 100;
      EXPECT_EQ(settings(actual), settings(expected)) << static_cast<int>(row.contentClass);
    }
  }
}

TEST(WebPEncoder, tellsThePresetsApart) {
  EXPECT_NE(settings(preset(WEBP_PRESET_ICON)), settings(preset(WEBP_PRESET_TEXT)));
  EXPECT_NE(settings(preset(WEBP_PRESET_DRAWING)), settings(preset(WEBP_PRESET_TEXT)));
  EXPECT_NE(settings(preset(WEBP_PRESET_PHOTO)), settings(preset(WEBP_PRESET_TEXT)));
}

TEST(WebPEncoder, setsALossyPlansQualityAndEffort) {
  struct Row {
    double quality;
    Effort effort;
    bool hasAlpha;
    float expectedQuality;
    int expectedMethod;
  };
  const Row rows[]{
      {62.5, Effort::fast, false, 62.5F, 4},     {62.5, Effort::balanced, false, 62.5F, 5},
      {62.5, Effort::thorough, false, 62.5F, 6}, {62.5, Effort::fast, true, 62.5F, 4},
      {62.5, Effort::balanced, true, 62.5F, 4},  {62.5, Effort::thorough, true, 62.5F, 4},
      {150, Effort::fast, false, 100, 4},        {-5, Effort::fast, false, 0, 4},
  };
  for (const Row& row : rows) {
    // The characteristics' alpha says the opposite and has no part in the method.
    const WebPConfig actual =
        WebPEncoder::configuration({.mode = Lossy{row.quality}, .effort = row.effort}, row.hasAlpha,
                                   {.hasAlpha = !row.hasAlpha});
    WebPConfig expected = preset(WEBP_PRESET_PHOTO);
    expected.quality = row.expectedQuality;
    expected.method = row.expectedMethod;
    expected.alpha_quality = 100;
    EXPECT_EQ(settings(actual), settings(expected));
  }
}

TEST(WebPEncoder, setsALosslessPlansEffortTwice) {
  struct Row {
    Effort effort;
    float quality;
    int method;
  };
  for (const Row& row :
       {Row{Effort::fast, 50, 4}, Row{Effort::balanced, 70, 5}, Row{Effort::thorough, 80, 6}}) {
    for (const bool hasAlpha : {false, true}) {
      WebPConfig expected = preset(WEBP_PRESET_PHOTO);
      expected.lossless = 1;
      expected.quality = row.quality;
      expected.method = row.method;
      expected.near_lossless = 100;
      EXPECT_EQ(settings(WebPEncoder::configuration({.mode = Lossless{}, .effort = row.effort},
                                                    hasAlpha, photo)),
                settings(expected));
      expected.near_lossless = 60;
      EXPECT_EQ(settings(WebPEncoder::configuration(
                    {.mode = NearLossless{60}, .effort = row.effort}, hasAlpha, photo)),
                settings(expected));
    }
  }
}

TEST(WebPEncoder, clampsTheNearLosslessLevel) {
  const auto level = [](int planned) {
    return WebPEncoder::configuration({.mode = NearLossless{planned}}, false, photo).near_lossless;
  };
  EXPECT_EQ(level(-1), 0);
  EXPECT_EQ(level(0), 0);
  EXPECT_EQ(level(101), 100);
}

// Files

struct Decoded {
  WebPBitstreamFeatures features{};
  Bytes rgba;
};

Decoded decode(const Bytes& file) {
  Decoded decoded;
  EXPECT_EQ(WebPGetFeatures(file.data(), file.size(), &decoded.features), VP8_STATUS_OK);
  const auto size = static_cast<std::size_t>(decoded.features.width) *
                    static_cast<std::size_t>(decoded.features.height) * 4;
  decoded.rgba.resize(size);
  EXPECT_NE(WebPDecodeRGBAInto(file.data(), file.size(), decoded.rgba.data(), size,
                               decoded.features.width * 4),
            nullptr);
  return decoded;
}

/// The profile in a file; empty when there is none.
Bytes profileIn(const Bytes& file) {
  const WebPData data{file.data(), file.size()};
  const Handle<WebPDemuxer, WebPDemuxDelete> demuxer(WebPDemux(&data));
  if (!demuxer) throw std::runtime_error("no WebP file");
  WebPChunkIterator chunk{};
  Bytes profile;
  if (WebPDemuxGetChunk(demuxer.get(), "ICCP", 1, &chunk)) {
    profile.assign(chunk.chunk.bytes, chunk.chunk.bytes + chunk.chunk.size);
  }
  WebPDemuxReleaseChunkIterator(&chunk);
  return profile;
}

/// The numbers that WebPGetFeatures has for the two codings.
constexpr int lossyFormat = 1, losslessFormat = 2;

double meanDifference(ByteView left, ByteView right) {
  EXPECT_EQ(left.size(), right.size());
  double sum = 0;
  for (std::size_t i = 0; i < left.size(); ++i) sum += std::abs(left[i] - right[i]);
  return sum / static_cast<double>(left.size());
}

Bytes encode(const RGBABuffer& buffer, const EncodingPlan& plan) {
  return WebPEncoder::encode(buffer, plan, {.hasAlpha = buffer.hasAlpha});
}

TEST(WebPEncoder, keepsEveryPixelWhenLossless) {
  for (const auto& image :
       {test::noisyImage(61, 43), test::noisyImage(1, 1), test::alphaGradientImage(61, 43)}) {
    // Transparent pixels have no colour, as in every buffer.
    const RGBABuffer drawn = test::bufferOf(image);
    const RGBABuffer buffer = test::drawBuffer(
        image.width, image.height, image.colorSpace, [&](std::size_t x, std::size_t y) {
          const test::Pixel pixel = test::pixelAt(image, x, y);
          return pixel[3] == 0 ? test::Pixel{} : pixel;
        });
    const Decoded decoded = decode(encode(buffer, {.mode = Lossless{}, .effort = Effort::fast}));
    EXPECT_EQ(decoded.features.format, losslessFormat);
    EXPECT_EQ(decoded.features.has_alpha != 0, drawn.hasAlpha);
    EXPECT_EQ(decoded.rgba, Bytes(buffer.pixels.begin(), buffer.pixels.end()));
  }
}

TEST(WebPEncoder, staysCloseWhenLossy) {
  const RGBABuffer buffer = test::bufferOf(test::gradientImage(127, 65));
  const Decoded decoded = decode(encode(buffer, {.mode = Lossy{90}}));
  EXPECT_EQ(decoded.features.format, lossyFormat);
  EXPECT_EQ(decoded.features.width, 127);
  EXPECT_EQ(decoded.features.height, 65);
  EXPECT_FALSE(decoded.features.has_alpha);
  EXPECT_LT(meanDifference(decoded.rgba, buffer.pixels), 3);
}

TEST(WebPEncoder, writesFewerBytesAtLowerQuality) {
  const RGBABuffer buffer = test::bufferOf(test::noisyImage(200, 150));
  EXPECT_LT(encode(buffer, {.mode = Lossy{30}}).size(), encode(buffer, {.mode = Lossy{80}}).size());
}

TEST(WebPEncoder, keepsAlphaExactlyWhenLossy) {
  const RGBABuffer buffer = test::bufferOf(test::alphaGradientImage(90, 40));
  const Decoded decoded = decode(encode(buffer, {.mode = Lossy{40}}));
  EXPECT_TRUE(decoded.features.has_alpha);
  for (std::size_t at = 3; at < decoded.rgba.size(); at += 4) {
    ASSERT_EQ(decoded.rgba[at], buffer.pixels[at]) << "pixel " << at / 4;
  }
}

TEST(WebPEncoder, ignoresAlphaBytesOfABufferThatSaysItIsOpaque) {
  RGBABuffer buffer = test::bufferOf(test::alphaGradientImage(30, 20));
  buffer.hasAlpha = false;
  const Decoded decoded = decode(encode(buffer, {.mode = Lossless{}}));
  EXPECT_FALSE(decoded.features.has_alpha);
  for (std::size_t at = 0; at < decoded.rgba.size(); ++at) {
    ASSERT_EQ(decoded.rgba[at], at % 4 == 3 ? 255 : buffer.pixels[at]);
  }
}

TEST(WebPEncoder, preprocessesWhenNearLossless) {
  const RGBABuffer buffer = test::bufferOf(test::noisyImage(160, 120));
  const Bytes exact = encode(buffer, {.mode = Lossless{}});
  const Bytes near = encode(buffer, {.mode = NearLossless{60}});
  EXPECT_LT(near.size(), exact.size());
  const Decoded decoded = decode(near);
  EXPECT_EQ(decoded.features.format, losslessFormat);
  EXPECT_LT(meanDifference(decoded.rgba, buffer.pixels), 4);
}

TEST(WebPEncoder, givesTheSameBytesEveryTime) {
  const RGBABuffer buffer = test::bufferOf(test::noisyImage(64, 64));
  for (const EncodingPlan& plan :
       {EncodingPlan{.mode = Lossy{75}}, EncodingPlan{.mode = Lossless{}}}) {
    EXPECT_EQ(encode(buffer, plan), encode(buffer, plan));
  }
}

std::string errorOf(const RGBABuffer& buffer) {
  try {
    encode(buffer, {.mode = Lossy{50}, .effort = Effort::fast});
  } catch (const ImageProcessingError& error) {
    return error.localizedDescription();
  }
  return "none";
}

TEST(WebPEncoder, refusesSidesThatTheFormatCannotHold) {
  const auto strip = [](std::size_t width, std::size_t height) {
    return test::bufferOf(test::gradientImage(width, height));
  };
  const std::string encodingFailed = "Échec de l'encodage au format WebP.";
  EXPECT_EQ(errorOf(strip(16'383, 1)), "none");
  EXPECT_EQ(errorOf(strip(1, 16'383)), "none");
  EXPECT_EQ(errorOf(strip(16'384, 1)), encodingFailed);
  EXPECT_EQ(errorOf(strip(1, 16'384)), encodingFailed);
  EXPECT_EQ(errorOf(strip(0, 5)), encodingFailed);
}

TEST(WebPEncoder, reportsWhatTheLibraryRefuses) {
  WebPConfig config = preset(WEBP_PRESET_PHOTO);
  config.quality = 1000;
  EXPECT_THROW(WebPEncoder::encodePicture(test::bufferOf(test::gradientImage(8, 8)), config),
               ImageProcessingError);
}

// Profiles

TEST(WebPEncoder, embedsTheProfileOfASpaceThatReadersDoNotAssume) {
  const Bytes profile = test::displayP3Profile();
  const ColorSpacePtr space = ColorSpace::fromICC(profile, ColorSpace::Model::rgb);
  const RGBABuffer buffer = test::bufferOf(test::patchImage(30, 20, space));
  for (const EncodingPlan& plan :
       {EncodingPlan{.mode = Lossy{75}}, EncodingPlan{.mode = Lossless{}}}) {
    const Bytes file = encode(buffer, plan);
    EXPECT_EQ(profileIn(file), profile);
    EXPECT_EQ(decode(file).features.width, 30);
  }
}

TEST(WebPEncoder, keepsAlphaBesideAProfile) {
  const ColorSpacePtr space = ColorSpace::fromICC(test::displayP3Profile(), ColorSpace::Model::rgb);
  const RGBABuffer buffer = test::drawBuffer(20, 20, space, [](std::size_t x, std::size_t) {
    return test::Pixel{200, 100, 50, static_cast<std::uint16_t>(10 + x * 10)};
  });
  const Bytes file = encode(buffer, {.mode = Lossless{}});
  EXPECT_EQ(profileIn(file), test::displayP3Profile());
  EXPECT_EQ(decode(file).rgba, Bytes(buffer.pixels.begin(), buffer.pixels.end()));
}

TEST(WebPEncoder, embedsNoProfileForSRGB) {
  const RGBABuffer buffer = test::bufferOf(test::patchImage(30, 20, ColorSpace::sRGB()));
  const Bytes file = encode(buffer, {.mode = Lossy{75}});
  EXPECT_TRUE(profileIn(file).empty());
  EXPECT_EQ(std::string(file.begin() + 12, file.begin() + 16), "VP8 ") << "not a simple file";
}

TEST(WebPEncoder, attachesAProfileOnlyToAWebPFile) {
  const Bytes profile = test::displayP3Profile();
  const RGBABuffer buffer = test::bufferOf(test::patchImage(30, 20, ColorSpace::sRGB()));
  const Bytes file = encode(buffer, {.mode = Lossy{75}});
  const auto attached = WebPEncoder::attach(profile, file);
  ASSERT_TRUE(attached.has_value());
  EXPECT_EQ(profileIn(*attached), profile);
  EXPECT_FALSE(WebPEncoder::attach(profile, Bytes{1, 2, 3, 4}).has_value());
  EXPECT_FALSE(WebPEncoder::attach(profile, ByteView(file).first(20)).has_value());
}

TEST(WebPEncoderDeathTest, leavesOutAProfileThatThereIsNoMemoryFor) {
  if (test::endsWithoutMemory()) GTEST_SKIP() << "sanitizers end the process";
  constexpr std::size_t profileSize = std::size_t{64} << 20;
  const RGBABuffer buffer =
      test::bufferOf(test::patchImage(30, 20, test::spaceOfLongProfile(profileSize)));
  const EncodingPlan plan{.mode = Lossy{75}};
  ASSERT_EQ(profileIn(encode(buffer, plan)).size(), profileSize);
  const Bytes withoutProfile =
      WebPEncoder::encodePicture(buffer, WebPEncoder::configuration(plan, false, {}));
  const auto encodeInShortMemory = [&] {
    test::leaveMemory(profileSize / 2);
    std::_Exit(encode(buffer, plan) == withoutProfile ? 0 : 1);
  };
  EXPECT_EXIT(encodeInShortMemory(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace orvane
