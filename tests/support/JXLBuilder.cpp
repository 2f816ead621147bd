#include "support/JXLBuilder.h"

#include <jxl/decode_cxx.h>
#include <jxl/encode.h>
#include <jxl/encode_cxx.h>

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace orvane::test {
namespace {

void require(JxlEncoderStatus status, const char* what) {
  if (status != JXL_ENC_SUCCESS) throw std::runtime_error(what);
}

bool hasAlpha(const Image& image) { return image.alpha != AlphaKind::none; }

std::uint32_t channelsOf(const Image& image) {
  const bool isGray =
      image.layout == ChannelLayout::gray || image.layout == ChannelLayout::grayAlpha;
  return (isGray ? 1 : 3) + (hasAlpha(image) ? 1 : 0);
}

/// The rows without padding and without filler.
Bytes samplesOf(const Image& image) {
  const std::size_t kept = channelsOf(image) * static_cast<std::size_t>(image.bitsPerComponent / 8);
  Bytes samples;
  samples.reserve(image.width * image.height * kept);
  for (std::size_t y = 0; y < image.height; ++y) {
    for (std::size_t x = 0; x < image.width; ++x) {
      const std::uint8_t* at = image.row(y) + x * image.bytesPerPixel();
      samples.insert(samples.end(), at, at + kept);
    }
  }
  return samples;
}

JxlBasicInfo basicInfo(const Image& image, const JXLOptions& options, bool isAnimation) {
  const std::uint32_t bits =
      static_cast<std::uint32_t>(options.bitsPerSample.value_or(image.bitsPerComponent));
  const auto exponentBits = static_cast<std::uint32_t>(options.exponentBits);
  const std::uint32_t alphaChannels = hasAlpha(image) ? 1 : 0;
  JxlBasicInfo info;
  JxlEncoderInitBasicInfo(&info);
  info.xsize = static_cast<std::uint32_t>(image.width) + 2 * options.border;
  info.ysize = static_cast<std::uint32_t>(image.height) + 2 * options.border;
  info.bits_per_sample = bits;
  info.exponent_bits_per_sample = exponentBits;
  info.num_color_channels = channelsOf(image) - alphaChannels;
  info.num_extra_channels = alphaChannels + (options.extraChannel ? 1 : 0);
  info.alpha_bits = alphaChannels * bits;
  info.alpha_exponent_bits = alphaChannels * exponentBits;
  info.alpha_premultiplied = image.alpha == AlphaKind::premultiplied;
  info.uses_original_profile = !options.xybDistance;
  info.orientation = options.orientation;
  info.have_animation = isAnimation;
  info.animation.tps_numerator = 10;
  info.animation.tps_denominator = 1;
  return info;
}

void setColors(JxlEncoder* encoder, const JXLOptions& options, bool isGray) {
  if (!options.icc.empty()) {
    require(JxlEncoderSetICCProfile(encoder, options.icc.data(), options.icc.size()), "profile");
    return;
  }
  JxlColorEncoding encoding{};
  JxlColorEncodingSetToSRGB(&encoding, isGray);
  if (options.encoding) encoding = *options.encoding;
  require(JxlEncoderSetColorEncoding(encoder, &encoding), "colour encoding");
}

JxlEncoderFrameSettings* makeSettings(JxlEncoder* encoder, const JXLOptions& options) {
  JxlEncoderFrameSettings* settings = JxlEncoderFrameSettingsCreate(encoder, nullptr);
  if (!options.xybDistance) require(JxlEncoderSetFrameLossless(settings, JXL_TRUE), "lossless");
  require(JxlEncoderSetFrameDistance(settings, options.xybDistance.value_or(0)), "distance");
  require(JxlEncoderFrameSettingsSetOption(settings, JXL_ENC_FRAME_SETTING_EFFORT, options.effort),
          "effort");
  return settings;
}

void setAnimationFrame(JxlEncoderFrameSettings* settings, const Image& image,
                       std::uint32_t border) {
  JxlFrameHeader header;
  JxlEncoderInitFrameHeader(&header);
  header.duration = 1;
  if (border > 0) {
    header.layer_info.have_crop = JXL_TRUE;
    header.layer_info.crop_x0 = header.layer_info.crop_y0 = static_cast<std::int32_t>(border);
    header.layer_info.xsize = static_cast<std::uint32_t>(image.width);
    header.layer_info.ysize = static_cast<std::uint32_t>(image.height);
  }
  require(JxlEncoderSetFrameHeader(settings, &header), "frame header");
}

void describeExtraChannels(JxlEncoder* encoder, const JxlBasicInfo& info,
                           std::optional<JxlExtraChannelType> extra) {
  JxlExtraChannelInfo channel;
  if (info.alpha_bits > 0) {
    JxlEncoderInitExtraChannelInfo(JXL_CHANNEL_ALPHA, &channel);
    channel.bits_per_sample = info.alpha_bits;
    channel.exponent_bits_per_sample = info.alpha_exponent_bits;
    channel.alpha_premultiplied = info.alpha_premultiplied;
    require(JxlEncoderSetExtraChannelInfo(encoder, 0, &channel), "alpha");
  }
  if (!extra) return;
  JxlEncoderInitExtraChannelInfo(*extra, &channel);
  channel.bits_per_sample = 8;
  require(JxlEncoderSetExtraChannelInfo(encoder, info.num_extra_channels - 1, &channel), "extra");
}

void addFrame(JxlEncoderFrameSettings* settings, const Image& image, bool hasExtraChannel) {
  const JxlPixelFormat format{channelsOf(image),
                              image.bitsPerComponent == 16 ? JXL_TYPE_UINT16 : JXL_TYPE_UINT8,
                              JXL_NATIVE_ENDIAN, 0};
  const Bytes samples = samplesOf(image);
  require(JxlEncoderAddImageFrame(settings, &format, samples.data(), samples.size()), "frame");
  if (!hasExtraChannel) return;
  const JxlPixelFormat extraFormat{1, JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN, 0};
  Bytes extra(image.width * image.height, 128);
  extra.front() = 0;
  require(JxlEncoderSetExtraChannelBuffer(settings, &extraFormat, extra.data(), extra.size(),
                                          hasAlpha(image) ? 1 : 0),
          "extra channel buffer");
}

Bytes finish(JxlEncoder* encoder) {
  JxlEncoderCloseInput(encoder);
  Bytes file;
  Bytes chunk(1 << 16);
  JxlEncoderStatus status = JXL_ENC_NEED_MORE_OUTPUT;
  while (status == JXL_ENC_NEED_MORE_OUTPUT) {
    std::uint8_t* next = chunk.data();
    std::size_t available = chunk.size();
    status = JxlEncoderProcessOutput(encoder, &next, &available);
    file.insert(file.end(), chunk.data(), next);
  }
  require(status, "output");
  return file;
}

JxlDecoderPtr decoderOf(ByteView file, int events) {
  JxlDecoderPtr decoder = JxlDecoderMake(nullptr);
  JxlDecoderSubscribeEvents(decoder.get(), events);
  JxlDecoderSetInput(decoder.get(), file.data(), file.size());
  JxlDecoderCloseInput(decoder.get());
  return decoder;
}

}  // namespace

Bytes buildJXL(std::span<const Image> frames, const JXLOptions& options) {
  const Image& first = frames.front();
  const JxlBasicInfo info = basicInfo(first, options, frames.size() > 1);
  const JxlEncoderPtr encoder = JxlEncoderMake(nullptr);
  if (options.inContainer) require(JxlEncoderUseContainer(encoder.get(), JXL_TRUE), "container");
  require(JxlEncoderSetBasicInfo(encoder.get(), &info), "basic info");
  describeExtraChannels(encoder.get(), info, options.extraChannel);
  setColors(encoder.get(), options, info.num_color_channels == 1);
  for (const Image& frame : frames) {
    JxlEncoderFrameSettings* settings = makeSettings(encoder.get(), options);
    if (frames.size() > 1) setAnimationFrame(settings, frame, options.border);
    addFrame(settings, frame, options.extraChannel.has_value());
  }
  return finish(encoder.get());
}

Bytes buildJXL(const Image& image, const JXLOptions& options) {
  return buildJXL(std::span(&image, 1), options);
}

Bytes buildJXLFromJPEG(ByteView jpeg, int effort) {
  const JxlEncoderPtr encoder = JxlEncoderMake(nullptr);
  require(JxlEncoderUseContainer(encoder.get(), JXL_TRUE), "container");
  require(JxlEncoderStoreJPEGMetadata(encoder.get(), JXL_TRUE), "JPEG metadata");
  JxlEncoderFrameSettings* settings = JxlEncoderFrameSettingsCreate(encoder.get(), nullptr);
  require(JxlEncoderFrameSettingsSetOption(settings, JXL_ENC_FRAME_SETTING_EFFORT, effort),
          "effort");
  require(JxlEncoderAddJPEGFrame(settings, jpeg.data(), jpeg.size()), "JPEG");
  return finish(encoder.get());
}

Bytes buildFloatJXL(std::span<const float> samples) {
  JxlBasicInfo info;
  JxlEncoderInitBasicInfo(&info);
  info.xsize = static_cast<std::uint32_t>(samples.size() / 3);
  info.ysize = 1;
  info.bits_per_sample = 32;
  info.exponent_bits_per_sample = 8;
  info.uses_original_profile = JXL_TRUE;
  const JxlEncoderPtr encoder = JxlEncoderMake(nullptr);
  require(JxlEncoderSetBasicInfo(encoder.get(), &info), "basic info");
  setColors(encoder.get(), {}, false);
  const JxlPixelFormat format{3, JXL_TYPE_FLOAT, JXL_NATIVE_ENDIAN, 0};
  require(JxlEncoderAddImageFrame(makeSettings(encoder.get(), {}), &format, samples.data(),
                                  samples.size_bytes()),
          "frame");
  return finish(encoder.get());
}

bool canBuildPremultipliedJXL() {
  return JxlEncoderVersion() >= 11000;  // 0.7 ends the process
}

JxlColorEncoding jxlEncoding(JxlColorSpace space, JxlPrimaries primaries,
                             JxlTransferFunction transfer) {
  JxlColorEncoding encoding{};
  encoding.color_space = space;
  encoding.white_point = JXL_WHITE_POINT_D65;
  encoding.primaries = primaries;
  encoding.transfer_function = transfer;
  encoding.rendering_intent = JXL_RENDERING_INTENT_RELATIVE;
  return encoding;
}

JxlBasicInfo readJXLBasicInfo(ByteView file) {
  const JxlDecoderPtr decoder = decoderOf(file, JXL_DEC_BASIC_INFO);
  JxlBasicInfo info;
  if (JxlDecoderProcessInput(decoder.get()) != JXL_DEC_BASIC_INFO ||
      JxlDecoderGetBasicInfo(decoder.get(), &info) != JXL_DEC_SUCCESS) {
    throw std::runtime_error("no JPEG XL header");
  }
  return info;
}

Bytes rebuildJPEG(ByteView file) {
  const JxlDecoderPtr decoder = decoderOf(file, JXL_DEC_JPEG_RECONSTRUCTION | JXL_DEC_FULL_IMAGE);
  if (JxlDecoderProcessInput(decoder.get()) != JXL_DEC_JPEG_RECONSTRUCTION) return {};
  Bytes jpeg(std::size_t{4} << 20);
  JxlDecoderSetJPEGBuffer(decoder.get(), jpeg.data(), jpeg.size());
  if (JxlDecoderProcessInput(decoder.get()) != JXL_DEC_FULL_IMAGE) return {};
  jpeg.resize(jpeg.size() - JxlDecoderReleaseJPEGBuffer(decoder.get()));
  return jpeg;
}

}  // namespace orvane::test
