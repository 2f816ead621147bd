#include "codecs/jxl/JXLEncoder.h"

#include <jxl/encode.h>
#include <jxl/encode_cxx.h>

#include <algorithm>
#include <exception>
#include <limits>
#include <new>
#include <span>

#include "codecs/ImageSource.h"
#include "codecs/UnreadableImage.h"
#include "codecs/jpeg/JPEGLibrary.h"
#include "codecs/jxl/JXLColors.h"
#include "codecs/jxl/JXLLibrary.h"
#include "picture/ColorProfile.h"
#include "picture/ImageProcessingError.h"
#include "platform/foundation/Memory.h"
#include "platform/foundation/Parallel.h"
#include "platform/graphics/Orient.h"

namespace orvane::JXLEncoder {
namespace {

constexpr std::size_t scratchBytes = std::size_t{1} << 20;

void require(bool succeeded) {
  if (!succeeded) throw ImageProcessingError::encodingFailed(ImageFormat::jxl);
}

void require(JxlEncoderStatus status) { require(status == JXL_ENC_SUCCESS); }

std::uint32_t side(std::size_t length) {
  require(length <= std::numeric_limits<std::uint32_t>::max());
  return static_cast<std::uint32_t>(length);
}

/// `threads` must outlive the encoder.
JxlEncoderPtr makeEncoder(int& threads) {
  JxlEncoderPtr encoder = JxlEncoderMake(nullptr);
  require(encoder != nullptr);
  require(JxlEncoderSetParallelRunner(encoder.get(), JXLLibrary::runInParallel, &threads));
  return encoder;
}

void setBasicInfo(JxlEncoder* encoder, const RGBABuffer& rgba, bool hasAlpha, bool isLossless) {
  JxlBasicInfo info;
  JxlEncoderInitBasicInfo(&info);
  info.xsize = side(rgba.width);
  info.ysize = side(rgba.height);
  info.bits_per_sample = 8;
  info.num_color_channels = 3;
  info.num_extra_channels = hasAlpha ? 1 : 0;
  info.alpha_bits = hasAlpha ? 8 : 0;
  info.uses_original_profile = isLossless ? JXL_TRUE : JXL_FALSE;
  require(JxlEncoderSetBasicInfo(encoder, &info));
}

void setColors(JxlEncoder* encoder, const ColorSpace& colorSpace) {
  const auto profile = ColorProfile::embeddableICC(colorSpace);
  // A profile's curves end at the reference white: brighter light would be lost in XYB.
  if (const auto named = profile ? highDynamicRangeEncoding(colorSpace) : std::nullopt) {
    require(JxlEncoderSetColorEncoding(encoder, &*named));
    return;
  }
  if (profile) {
    require(JxlEncoderSetICCProfile(encoder, profile->data(), profile->size()));
    return;
  }
  JxlColorEncoding encoding{};
  JxlColorEncodingSetToSRGB(&encoding, JXL_FALSE);
  require(JxlEncoderSetColorEncoding(encoder, &encoding));
}

void setQuality(JxlEncoderFrameSettings* settings, const EncodingPlan::Mode& mode) {
  double frameDistance = 0;
  if (const auto* lossy = std::get_if<EncodingPlan::Lossy>(&mode)) {
    frameDistance = distance(lossy->quality);
  } else {
    require(std::holds_alternative<EncodingPlan::Lossless>(mode));
    require(JxlEncoderSetFrameLossless(settings, JXL_TRUE));
  }
  require(JxlEncoderSetFrameDistance(settings, static_cast<float>(frameDistance)));
}

/// libjxl keeps its default when it does not know the effort.
void setEffort(JxlEncoderFrameSettings* settings, int effort) {
  JxlEncoderFrameSettingsSetOption(settings, JXL_ENC_FRAME_SETTING_EFFORT, effort);
}

/// The pixels packed as R, G, B.
PixelMemory stripAlpha(const RGBABuffer& rgba, int threads) {
  const MutablePixelMemory rgb = makePixelMemory(rgba.width * rgba.height * 3);
  inParallel(rgba.height, threads, [&](std::size_t y, std::size_t) {
    const std::uint8_t* pixel = &rgba.pixels[y * rgba.width * 4];
    std::uint8_t* out = rgb.get() + y * rgba.width * 3;
    for (std::size_t x = 0; x < rgba.width; ++x, pixel += 4) out = std::copy_n(pixel, 3, out);
  });
  return rgb;
}

/// libjxl 0.7 ends the process when an allocation fails. It takes 16 MiB for the smallest picture;
/// per pixel 44 bytes in use were measured for pixels, 38 for a JPEG of noise.
void requireMemory(std::size_t width, std::size_t height) {
  constexpr std::size_t base = std::size_t{18} << 20;
  constexpr std::size_t bytesPerPixel = 48;
  Memory::require(base + width * height * bytesPerPixel);
}

/// libjxl copies what it is given.
void addFrame(JxlEncoderFrameSettings* settings, ByteView samples, std::uint32_t channels) {
  const JxlPixelFormat format{channels, JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN, 0};
  require(JxlEncoderAddImageFrame(settings, &format, samples.data(), samples.size()));
}

/// Returns all the output of an encoder whose input is closed.
Bytes drainOutput(JxlEncoder* encoder) {
  Bytes scratch(scratchBytes);
  Bytes result;
  JxlEncoderStatus status = JXL_ENC_NEED_MORE_OUTPUT;
  while (status == JXL_ENC_NEED_MORE_OUTPUT) {
    std::uint8_t* next = scratch.data();
    std::size_t available = scratch.size();
    status = JxlEncoderProcessOutput(encoder, &next, &available);
    require(status != JXL_ENC_NEED_MORE_OUTPUT || next != scratch.data());
    result.insert(result.end(), scratch.data(), next);
  }
  require(status);
  return result;
}

bool isSubsampled(const jpeg_decompress_struct& header) {
  const std::span components(header.comp_info, static_cast<std::size_t>(header.num_components));
  return std::ranges::any_of(components, [&](const jpeg_component_info& component) {
    return component.h_samp_factor != header.max_h_samp_factor ||
           component.v_samp_factor != header.max_v_samp_factor;
  });
}

/// Throws unless libjxl can take this JPEG, judged by its header.
void requireTranscodable(ByteView jpeg) {
  JPEGErrors errors;
  JPEGDecompressor header;
  header.err = &errors;
  errors.run<UnreadableImage>([&] {
    jpeg_create_decompress(&header);
    jpeg_mem_src(&header, jpeg.data(), static_cast<unsigned long>(jpeg.size()));
    jpeg_read_header(&header, TRUE);
  });
  // JPEG XL can subsample YCbCr only. From other JPEGs libjxl 0.7 makes unreadable files.
  require(header.jpeg_color_space != JCS_RGB || !isSubsampled(header));
  requireMemory(header.image_width, header.image_height);
}

Bytes repacked(ByteView jpeg, int effort, int threads) {
  requireTranscodable(jpeg);
  const JxlEncoderPtr encoder = makeEncoder(threads);
  require(JxlEncoderUseContainer(encoder.get(), JXL_TRUE));
  require(JxlEncoderStoreJPEGMetadata(encoder.get(), JXL_TRUE));
  JxlEncoderFrameSettings* settings = JxlEncoderFrameSettingsCreate(encoder.get(), nullptr);
  require(settings != nullptr);
  setEffort(settings, effort);
  require(JxlEncoderAddJPEGFrame(settings, jpeg.data(), jpeg.size()));
  JxlEncoderCloseInput(encoder.get());
  return drainOutput(encoder.get());
}

/// The orientation that readers of `jpeg` turn it by.
int orientationOf(ByteView jpeg) {
  const int stored = ImageSource::create(jpeg)->orientation();
  return isTurned(stored) ? stored : JXL_ORIENT_IDENTITY;
}

/// Throws unless libjxl rebuilds every byte of `jpeg` from `jxl`, and turns it as `jpeg` is turned.
/// libjxl 0.7 accepts JPEGs that it cannot rebuild, such as one with two ICC segments of the same
/// number, and sees no orientation but a short one.
void requireRebuilding(ByteView jpeg, ByteView jxl, int threads) {
  const JxlDecoderPtr decoder =
      JXLLibrary::makeDecoder(jxl, JXL_DEC_JPEG_RECONSTRUCTION | JXL_DEC_FULL_IMAGE);
  JxlDecoderSetParallelRunner(decoder.get(), JXLLibrary::runInParallel, &threads);
  JxlDecoderSetKeepOrientation(decoder.get(), JXL_TRUE);  // reports it, in place of turning
  JXLLibrary::advance(decoder.get(), JXL_DEC_JPEG_RECONSTRUCTION);
  Bytes rebuilt(jpeg.size());  // libjxl 0.7 cannot write the file in smaller parts
  JxlDecoderSetJPEGBuffer(decoder.get(), rebuilt.data(), rebuilt.size());
  JXLLibrary::advance(decoder.get(), JXL_DEC_FULL_IMAGE);
  require(JxlDecoderReleaseJPEGBuffer(decoder.get()) == 0 && std::ranges::equal(rebuilt, jpeg));
  JxlBasicInfo info;
  require(JxlDecoderGetBasicInfo(decoder.get(), &info) == JXL_DEC_SUCCESS);
  require(info.orientation == orientationOf(jpeg));
}

}  // namespace

double distance(double quality) {
  if (quality < 0) return 25;
  // Both pieces give 6.4 at quality 30.
  if (quality < 30) return 53.0 / 3000 * quality * quality - 1.15 * quality + 25;
  if (quality < 99) return 0.09 * (100 - quality) + 0.1;
  return 0.19;
}

Bytes encode(const RGBABuffer& rgba, bool hasAlpha, const EncodingPlan& plan) {
  requireMemory(rgba.width, rgba.height);
  int threads = plan.threads;
  const JxlEncoderPtr encoder = makeEncoder(threads);
  JxlEncoderFrameSettings* settings = JxlEncoderFrameSettingsCreate(encoder.get(), nullptr);
  require(settings != nullptr);
  setBasicInfo(encoder.get(), rgba, hasAlpha,
               std::holds_alternative<EncodingPlan::Lossless>(plan.mode));
  setColors(encoder.get(), *rgba.colorSpace);
  setQuality(settings, plan.mode);
  setEffort(settings, effort(plan.effort));
  if (hasAlpha) {
    addFrame(settings, rgba.pixels, 4);
  } else {
    const PixelMemory rgb = stripAlpha(rgba, threads);
    addFrame(settings, {rgb.get(), rgba.width * rgba.height * 3}, 3);
  }
  JxlEncoderCloseInput(encoder.get());
  return drainOutput(encoder.get());
}

std::optional<Bytes> transcodeJPEG(ByteView jpeg, int effort, int threads) try {
  Bytes jxl = repacked(jpeg, effort, threads);
  requireRebuilding(jpeg, jxl, threads);
  return jxl;
} catch (const std::exception&) {
  return std::nullopt;  // the caller encodes pixels instead
}

}  // namespace orvane::JXLEncoder
