#include "codecs/webp/WebPEncoder.h"

#include <webp/mux.h>

#include <algorithm>

#include "picture/ColorProfile.h"
#include "picture/ImageProcessingError.h"
#include "platform/foundation/Handle.h"

namespace orvane::WebPEncoder {
namespace {

using PictureContent = Handle<WebPPicture, WebPPictureFree>;
using MemoryWriterContent = Handle<WebPMemoryWriter, WebPMemoryWriterClear>;
using DataContent = Handle<WebPData, WebPDataClear>;
using Mux = Handle<WebPMux, WebPMuxDelete>;

/// Throws unless `succeeded`.
void require(bool succeeded) {
  if (!succeeded) throw ImageProcessingError::encodingFailed(ImageFormat::webp);
}

WebPPreset presetFor(const ImageCharacteristics& characteristics) {
  switch (characteristics.contentClass) {
    case ContentClass::flatGraphic:
      return characteristics.hasAlpha ? WEBP_PRESET_ICON : WEBP_PRESET_TEXT;
    case ContentClass::screenContent:
      return WEBP_PRESET_TEXT;
    case ContentClass::illustration:
      return WEBP_PRESET_DRAWING;
    case ContentClass::photo:
    case ContentClass::detailedPhoto:
      return WEBP_PRESET_PHOTO;
  }
  return WEBP_PRESET_DEFAULT;
}

/// Sets the fields that depend on the mode. The others keep the preset's values.
struct ModeSetter {
  WebPConfig& config;
  int effort;  ///< 0…2
  bool hasAlpha;

  void operator()(const EncodingPlan::Lossy& mode) const {
    config.lossless = 0;
    config.quality = static_cast<float>(std::clamp(mode.quality, 0.0, 100.0));
    // The method is also the effort spent on the lossless alpha plane. Above 4 it takes much time
    // and saves few bytes.
    config.method = hasAlpha ? 4 : effort + 4;
    config.alpha_quality = 100;
  }
  void operator()(const EncodingPlan::NearLossless& mode) const {
    setLossless(std::clamp(mode.level, 0, 100));
  }
  void operator()(const EncodingPlan::Lossless&) const { setLossless(100); }

 private:
  void setLossless(int nearLossless) const {
    static constexpr float qualities[]{50, 70, 80};  // here a measure of the encoder's effort
    config.lossless = 1;
    config.quality = qualities[effort];
    config.method = effort + 4;
    config.near_lossless = nearLossless;
  }
};

int webpMemoryWrite(const std::uint8_t* data, std::size_t size, const WebPPicture* picture) {
  return WebPMemoryWrite(data, size, picture);
}

}  // namespace

WebPConfig configuration(const EncodingPlan& plan, bool hasAlpha,
                         const ImageCharacteristics& characteristics) {
  WebPConfig config{};
  require(WebPConfigPreset(&config, presetFor(characteristics), 75));
  std::visit(ModeSetter{config, ordinal(plan.effort), hasAlpha}, plan.mode);
  config.exact = 0;
  require(WebPValidateConfig(&config));
  return config;
}

Bytes encodePicture(const RGBABuffer& rgba, const WebPConfig& config) {
  // Checked before the import takes its memory.
  require(rgba.width <= WEBP_MAX_DIMENSION && rgba.height <= WEBP_MAX_DIMENSION);
  WebPPicture picture{};
  require(WebPPictureInit(&picture));
  const PictureContent pictureContent(&picture);
  picture.use_argb = 1;
  picture.width = static_cast<int>(rgba.width);
  picture.height = static_cast<int>(rgba.height);
  const auto import = rgba.hasAlpha ? WebPPictureImportRGBA : WebPPictureImportRGBX;
  require(import(&picture, rgba.pixels.data(), picture.width * 4));

  WebPMemoryWriter writer{};
  WebPMemoryWriterInit(&writer);
  const MemoryWriterContent writerContent(&writer);
  picture.writer = webpMemoryWrite;
  picture.custom_ptr = &writer;
  require(WebPEncode(&config, &picture) && writer.size > 0);
  return Bytes(writer.mem, writer.mem + writer.size);
}

std::optional<Bytes> attach(ByteView icc, ByteView to) try {
  const Mux mux(WebPMuxNew());
  const WebPData bitstream{to.data(), to.size()};
  const WebPData profile{icc.data(), icc.size()};
  constexpr int copyData = 1;
  WebPData assembled{};
  const DataContent assembledContent(&assembled);
  const bool attached = mux && WebPMuxSetImage(mux.get(), &bitstream, copyData) == WEBP_MUX_OK &&
                        WebPMuxSetChunk(mux.get(), "ICCP", &profile, copyData) == WEBP_MUX_OK &&
                        WebPMuxAssemble(mux.get(), &assembled) == WEBP_MUX_OK;
  if (!attached) return std::nullopt;
  return Bytes(assembled.bytes, assembled.bytes + assembled.size);
} catch (const std::bad_alloc&) {
  return std::nullopt;
}

Bytes encode(const RGBABuffer& rgba, const EncodingPlan& plan,
             const ImageCharacteristics& characteristics) {
  const WebPConfig config = configuration(plan, rgba.hasAlpha, characteristics);
  Bytes bitstream = encodePicture(rgba, config);
  const auto icc = ColorProfile::embeddableICC(*rgba.colorSpace);
  if (!icc) return bitstream;
  // A picture without its profile is better than none.
  std::optional<Bytes> withProfile = attach(*icc, bitstream);
  return withProfile ? std::move(*withProfile) : std::move(bitstream);
}

}  // namespace orvane::WebPEncoder
